#include "Simulator/Platform/RecordedRequest.h"

#include <string_view>

#include "Simulator/Platform/Internal/PercentEncoding.h"

namespace vorlane {

std::string RecordedRequest::bodyText() const {
    if (!request.HTTPBody) return {};
    return {request.HTTPBody->begin(), request.HTTPBody->end()};
}

Value RecordedRequest::payload() const {
    constexpr std::string_view kField = "payload=";
    auto body = bodyText();
    if (body.starts_with(kField)) body = percentDecoded(std::string_view(body).substr(kField.size()));
    auto parsed = Value::parse(body, nullptr, false);
    return parsed.is_discarded() ? Value() : parsed;
}

std::optional<std::string> RecordedRequest::header(const std::string& name) const {
    const auto found = request.allHTTPHeaderFields.find(name);
    if (found == request.allHTTPHeaderFields.end()) return std::nullopt;
    return found->second;
}

}  // namespace vorlane
