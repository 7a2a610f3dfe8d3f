#include "Simulator/Service/Http/ServiceRequest.h"

#include <strings.h>

#include <utility>

#include "Simulator/Service/Http/URLText.h"

namespace vorlane::service {

bool HeaderOrder::operator()(const std::string& left, const std::string& right) const {
    return strcasecmp(left.c_str(), right.c_str()) < 0;
}

ServiceRequest ServiceRequest::make(std::string method, std::string target) {
    ServiceRequest request;
    request.method = std::move(method);
    const auto end = target.find('?');
    if (end != std::string::npos) {
        request.query = formFields(std::string_view(target).substr(end + 1));
        target.resize(end);
    }
    request.path = std::move(target);
    return request;
}

std::optional<std::string> ServiceRequest::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> ServiceRequest::queryValue(const std::string& name) const {
    const auto found = query.find(name);
    return found == query.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace vorlane::service
