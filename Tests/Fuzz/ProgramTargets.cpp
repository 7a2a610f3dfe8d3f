#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "Simulator/Phone/Phone.h"
#include "Simulator/Service/EngagementService.h"
#include "Simulator/Service/Http/ServiceRequest.h"
#include "Simulator/Service/Http/ServiceResponse.h"
#include "Tests/Fuzz/FuzzTarget.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::fuzz {

namespace {

/// Sends standard output to nowhere while it lives.
class QuietOutput {
public:
    QuietOutput() : previous_(dup(STDOUT_FILENO)) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~QuietOutput() {
        dup2(previous_, STDOUT_FILENO);
        close(previous_);
    }
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;

private:
    const int previous_;
};

/// Nothing listens on port 9, so every request is refused at once.
constexpr const char* kNowhere = "http://127.0.0.1:9";
constexpr std::size_t kMostLines = 32;

/// The next line; takes it off `input`.
std::string takeLine(std::string_view& input) {
    const auto end = input.find('\n');
    std::string line(input.substr(0, end));
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    return line;
}

/// Such a header name and value as a server's parser lets through.
void takeHeaders(std::string_view& input, service::ServiceRequest& request) {
    for (auto line = takeLine(input); !line.empty(); line = takeLine(input)) {
        const auto colon = line.find(':');
        if (colon != std::string::npos) request.headers[line.substr(0, colon)] = line.substr(colon + 1);
    }
}

}  // namespace

void fuzzPhoneLine(std::string_view input) {
    const TemporaryFolder folder;
    const QuietOutput quiet;
    phone::PhoneOptions options;
    options.dataDirectory = folder.path();
    options.serviceOrigin = kNowhere;
    options.virtualClock = 1'700'000'000.0;
    phone::Phone device(options);
    for (std::size_t i = 0; i < kMostLines && !input.empty() && !device.hasQuit(); ++i) device.take(takeLine(input));
}

void fuzzServiceRequest(std::string_view input) {
    service::EngagementService service(":memory:");
    service.stop();  // nobody waits for an answer that is delayed on purpose
    const auto method = takeLine(input);
    auto request = service::ServiceRequest::make(method, takeLine(input));
    takeHeaders(input, request);
    request.body = input;
    const auto response = service.answer(request);
    require(response.status >= 200 && response.status < 600, "every request is answered");
    require(response.status != 500, "no request is the service's own failure");
}

}  // namespace vorlane::fuzz
