#include "Inbox/VLCardImageLoader.h"

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <utility>

#include "Platform/DispatchQueue.h"
#include "Platform/Internal/ASCIICase.h"
#include "Platform/NSURLSession.h"
#include "Public/VLImage.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

bool isSecure(const NSURL& url) { return isEqualIgnoringCase(url.scheme(), "https"); }

std::int64_t portOf(const NSURL& url) {
    constexpr std::int64_t kSecurePort = 443;
    constexpr std::int64_t kPlainPort = 80;
    return url.port().value_or(isSecure(url) ? kSecurePort : kPlainPort);
}

auto originOf(const NSURL& url) {
    return std::tuple(lowercased(url.scheme()), lowercased(url.host().value_or("")), portOf(url));
}

bool isAllowed(const NSURL& url, const std::optional<NSURL>& service) {
    return isSecure(url) || (service && originOf(url) == originOf(*service));
}

/// Returns why the answer cannot hold an image, or "" if it can.
std::string fault(const std::optional<Data>& data, const NSURLResponse* response, const std::optional<NSError>& error,
                  const std::optional<NSURL>& service) {
    constexpr std::int64_t kFirstSuccess = 200;
    constexpr std::int64_t kLastSuccess = 299;
    if (error) return error->description();
    const auto* answer = dynamic_cast<const NSHTTPURLResponse*>(response);
    if (!answer) return "no HTTP response";
    if (answer->statusCode() < kFirstSuccess || answer->statusCode() > kLastSuccess) {
        return fmt::format("HTTP status {}", answer->statusCode());
    }
    if (!isAllowed(answer->URL(), service)) return "redirected to " + answer->URL().absoluteString();
    return data ? "" : "no data";
}

void logFault(const NSURL& url, const std::string& why) {
    logMessage(VLLogLevel::Warn, fmt::format("Card image {} not loaded: {}", url.absoluteString(), why));
}

}  // namespace

VLCardImageLoader::VLCardImageLoader(std::shared_ptr<NSURLSession> session, std::shared_ptr<DispatchQueue> queue)
    : session_(std::move(session)), queue_(std::move(queue)) {}

void VLCardImageLoader::load(const NSURL& imageURL, const std::optional<NSURL>& service, Handler handler) const {
    if (!isAllowed(imageURL, service)) {
        logFault(imageURL, "neither https nor the service's own");
        queue_->post([handler = std::move(handler)] { handler(nullptr); });
        return;
    }
    const auto task = session_->dataTaskWithRequest(
        // A redirect from plain http may lead away from the service's origin.
        {.URL = imageURL, .followsRedirects = isSecure(imageURL)},
        [queue = queue_, imageURL, service, handler = std::move(handler)](
            std::optional<Data> data, const std::shared_ptr<const NSURLResponse>& response,
            const std::optional<NSError>& error) {
            auto why = fault(data, response.get(), error, service);
            queue->post([imageURL, handler, why = std::move(why), data = std::move(data)]() mutable {
                auto image = why.empty() ? VLImage::imageWithData(std::move(*data)) : nullptr;
                if (!image) logFault(imageURL, why.empty() ? "not an image" : why);
                handler(std::move(image));
            });
        });
    task->resume();
}

}  // namespace vorlane
