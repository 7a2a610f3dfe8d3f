#include "Network/VLURLSession.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Network/VLRequestCounter.h"
#include "Network/VLRequestInFlight.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"

namespace vorlane {
namespace {

Data dataOf(const std::string& text) { return Data(text.begin(), text.end()); }

Data formBody(const std::string& json) {
    constexpr std::string_view kField = "payload=";
    const std::string encoded = stringByAddingPercentEncoding(json, vl_formURLEncodingAllowedCharacterSet());
    Data body;
    body.reserve(kField.size() + encoded.size());
    body.insert(body.end(), kField.begin(), kField.end());
    body.insert(body.end(), encoded.begin(), encoded.end());
    return body;
}

void logRequest(const NSURLRequest& request, std::uint32_t requestId, std::optional<Value> payload) {
    if (!VLLog::sharedInstance().logs(VLLogLevel::Debug)) return;
    logMessage(VLLogLevel::Debug,
               fmt::format("RQST{:04} {} {}", requestId, request.HTTPMethod, request.URL.absoluteString()),
               std::move(payload));
}

void completeWithJSONString(const std::optional<std::string>& text, std::int64_t statusCode,
                            const VLURLSession::JSONHandler& completionHandler) {
    std::optional<NSError> error;
    auto answer = vl_dictionaryWithJSON(text, error);
    completionHandler(std::move(answer), statusCode, std::move(error));
}

VLURLSession::TextHandler textHandler(VLURLSession::JSONHandler completionHandler) {
    if (!completionHandler) return {};
    return [handler = std::move(completionHandler)](std::optional<std::string> text, std::int64_t statusCode,
                                                    std::optional<NSError> error) {
        if (error) return handler(std::nullopt, statusCode, std::move(error));
        completeWithJSONString(text, statusCode, handler);
    };
}

}  // namespace

VLURLSession::VLURLSession(std::shared_ptr<NSURLSession> session, std::weak_ptr<UIApplication> application)
    : session_(std::move(session)), application_(std::move(application)) {}

VLURLSession::DataTask VLURLSession::GET(const NSURL& url, TextHandler completionHandler) {
    return sendWithoutBody(VL_HTTP_GET, url, std::move(completionHandler));
}

VLURLSession::DataTask VLURLSession::GETJSON(const NSURL& url, JSONHandler completionHandler) {
    return GET(url, textHandler(std::move(completionHandler)));
}

VLURLSession::DataTask VLURLSession::DELETE(const NSURL& url, TextHandler completionHandler) {
    return sendWithoutBody(VL_HTTP_DELETE, url, std::move(completionHandler));
}

VLURLSession::DataTask VLURLSession::POST(const NSURL& url, Dictionary payload, bool isFormSubmit,
                                          TextHandler completionHandler) {
    return sendPayload(VL_HTTP_POST, url, std::move(payload), isFormSubmit, std::move(completionHandler));
}

VLURLSession::DataTask VLURLSession::POSTWithJSONResponse(const NSURL& url, Dictionary payload, bool isFormSubmit,
                                                          JSONHandler completionHandler) {
    return POST(url, std::move(payload), isFormSubmit, textHandler(std::move(completionHandler)));
}

VLURLSession::DataTask VLURLSession::PUT(const NSURL& url, Dictionary payload, TextHandler completionHandler) {
    return sendPayload(VL_HTTP_PUT, url, std::move(payload), false, std::move(completionHandler));
}

VLURLSession::DataTask VLURLSession::sendWithoutBody(const char* method, const NSURL& url,
                                                     TextHandler completionHandler) {
    const std::uint32_t requestId = VLRequestCounter::incrementAndGetCounter();
    NSURLRequest request{.URL = url, .HTTPMethod = method};
    logRequest(request, requestId, std::nullopt);
    return startDataTaskWithRequest(std::move(request), requestId, std::move(completionHandler));
}

VLURLSession::DataTask VLURLSession::sendPayload(const char* method, const NSURL& url, Dictionary&& payload,
                                                 bool isFormSubmit, TextHandler completionHandler) {
    const std::uint32_t requestId = VLRequestCounter::incrementAndGetCounter();
    std::string json = vl_asJSON(std::move(payload));
    NSURLRequest request{.URL = url, .HTTPMethod = method};
    request.allHTTPHeaderFields["Content-Type"] =
        isFormSubmit ? "application/x-www-form-urlencoded" : "application/json";
    request.HTTPBody = isFormSubmit ? formBody(json) : dataOf(json);
    logRequest(request, requestId, Value(std::move(json)));
    return startDataTaskWithRequest(std::move(request), requestId, std::move(completionHandler));
}

VLURLSession::DataTask VLURLSession::startDataTaskWithRequest(NSURLRequest request, std::uint32_t requestId,
                                                              TextHandler completionHandler) {
    auto inFlight = std::make_shared<VLRequestInFlight>(request, requestId, application_, std::move(completionHandler));
    auto dataTask = session_->dataTaskWithRequest(
        std::move(request),
        [inFlight](std::optional<Data> data, std::shared_ptr<const NSURLResponse> response,
                   std::optional<NSError> error) { inFlight->complete(data, response.get(), std::move(error)); });
    inFlight->start(dataTask);
    return dataTask;
}

}  // namespace vorlane
