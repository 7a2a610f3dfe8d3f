#include "Benchmarks/Support/Host.h"

#include <utility>

#include "Public/Vorlane.h"

namespace vorlane::benchmarks {

namespace {

class InstantTask : public NSURLSessionDataTask {
public:
    InstantTask(NSURL url, NSURLSession::CompletionHandler handler)
        : url_(std::move(url)), handler_(std::move(handler)) {}

    void resume() override {
        const auto handler = std::exchange(handler_, nullptr);
        if (handler) handler(std::nullopt, std::make_shared<NSHTTPURLResponse>(url_, 204), std::nullopt);
    }
    void cancel() override {}

private:
    NSURL url_;
    NSURLSession::CompletionHandler handler_;
};

class InstantSession : public NSURLSession {
public:
    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                              CompletionHandler handler) override {
        return std::make_shared<InstantTask>(std::move(request.URL), std::move(handler));
    }
};

LinuxPlatform::Options optionsWithFolder(const std::string& folder) {
    LinuxPlatform::Options options;
    options.documentsFolder = folder;
    options.infoDictionary = {{"CFBundleIdentifier", "example.benchmark"}, {"CFBundleName", "Benchmark"}};
    return options;
}

std::shared_ptr<LinuxPlatform> install(std::shared_ptr<LinuxPlatform> platform, const std::string& origin) {
    Platform::install(platform);
    Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString(origin)));
    return platform;
}

}  // namespace

std::shared_ptr<NSURLSession> OfflinePlatform::makeURLSession(const NSURLSessionConfiguration& /*configuration*/) {
    return std::make_shared<InstantSession>();
}

std::shared_ptr<LinuxPlatform> installLinuxPlatform(const std::string& folder, const std::string& origin) {
    return install(std::make_shared<LinuxPlatform>(optionsWithFolder(folder)), origin);
}

std::shared_ptr<LinuxPlatform> installOfflinePlatform(const std::string& folder) {
    return install(std::make_shared<OfflinePlatform>(optionsWithFolder(folder)), "http://127.0.0.1:9");
}

void startLibrary() {
    auto options = VLSDKOptions::defaultOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");
    Vorlane::initialiseSDKWithApplication(Platform::current().application(), std::nullopt, options);
}

}  // namespace vorlane::benchmarks
