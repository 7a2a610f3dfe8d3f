#include "Benchmarks/Support/Host.h"

#include <utility>

#include "Public/Vorlane.h"

namespace vorlane::benchmarks {

namespace {

class InstantTask : public NSURLSessionDataTask {
public:
    InstantTask(NSURL url, std::optional<Data> body, NSURLSession::CompletionHandler handler)
        : url_(std::move(url)), body_(std::move(body)), handler_(std::move(handler)) {}

    void resume() override {
        const auto handler = std::exchange(handler_, nullptr);
        const int status = body_ ? 200 : 204;
        if (handler) handler(std::move(body_), std::make_shared<NSHTTPURLResponse>(url_, status), std::nullopt);
    }
    void cancel() override {}

private:
    NSURL url_;
    std::optional<Data> body_;
    NSURLSession::CompletionHandler handler_;
};

class InstantSession : public NSURLSession {
public:
    explicit InstantSession(Answers answers) : answers_(std::move(answers)) {}

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                              CompletionHandler handler) override {
        const auto* text = answerTo(answers_, request.URL.path());
        auto body = text ? std::optional(Data(text->begin(), text->end())) : std::nullopt;
        return std::make_shared<InstantTask>(std::move(request.URL), std::move(body), std::move(handler));
    }

private:
    const Answers answers_;
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
    return std::make_shared<InstantSession>(answers_);
}

std::shared_ptr<LinuxPlatform> installLinuxPlatform(const std::string& folder, const std::string& origin) {
    return install(std::make_shared<LinuxPlatform>(optionsWithFolder(folder)), origin);
}

std::shared_ptr<LinuxPlatform> installOfflinePlatform(const std::string& folder) {
    return install(std::make_shared<OfflinePlatform>(optionsWithFolder(folder)), "http://127.0.0.1:9");
}

std::shared_ptr<LinuxPlatform> installOfflinePlatform(const std::string& folder, Answers answers,
                                                      std::shared_ptr<LocationBackEnd> backEnd) {
    auto options = optionsWithFolder(folder);
    options.infoDictionary["NSLocationAlwaysUsageDescription"] = "To find what is near";
    options.infoDictionary["UIBackgroundModes"] = Array{"location"};
    options.locationBackEnd = std::move(backEnd);
    return install(std::make_shared<OfflinePlatform>(std::move(options), std::move(answers)), "http://127.0.0.1:9");
}

void startLibrary() {
    auto options = VLSDKOptions::defaultOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");
    Vorlane::initialiseSDKWithApplication(Platform::current().application(), std::nullopt, options);
}

}  // namespace vorlane::benchmarks
