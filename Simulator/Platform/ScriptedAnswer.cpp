#include "Simulator/Platform/ScriptedAnswer.h"

#include <memory>

namespace vorlane {

namespace {

std::shared_ptr<const NSURLResponse> responseOf(const ScriptedAnswer& answer, const NSURL& url) {
    if (!answer.hasResponse) return nullptr;
    if (!answer.isHTTP) return std::make_shared<NSURLResponse>(url);
    return std::make_shared<NSHTTPURLResponse>(url, answer.status);
}

}  // namespace

ScriptedAnswer ScriptedAnswer::withBody(std::int64_t status, const std::string& body) {
    ScriptedAnswer answer{.status = status};
    if (!body.empty()) answer.body = Data(body.begin(), body.end());
    return answer;
}

ScriptedAnswer ScriptedAnswer::withJSON(const Value& document) {
    // Bytes that are not UTF-8 are replaced, because a test may put any string into a document.
    return withBody(200, document.dump(-1, ' ', false, Value::error_handler_t::replace));
}

void ScriptedAnswer::passTo(const NSURLSession::CompletionHandler& handler, const NSURL& url) const {
    if (!handler) return;
    if (failure) {
        return handler(std::nullopt, nullptr,
                       NSError(NSURLErrorDomain, static_cast<std::int64_t>(*failure),
                               {{"NSErrorFailingURLStringKey", url.absoluteString()}}));
    }
    handler(body, responseOf(*this, url), std::nullopt);
}

}  // namespace vorlane
