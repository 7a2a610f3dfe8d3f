#include "Simulator/Service/Http/EndpointRouter.h"

#include <algorithm>
#include <span>
#include <utility>

#include "Simulator/Service/Http/ServiceRequest.h"
#include "Simulator/Service/Http/URLText.h"

namespace vorlane::service {
namespace {

using Parameters = std::map<std::string, std::string>;
using Segments = std::span<const std::string>;

bool isName(const std::string& segment) { return segment.starts_with('{') && segment.ends_with('}'); }

bool isLongName(const std::string& segment) { return isName(segment) && segment.ends_with("*}"); }

std::string nameOf(const std::string& segment) {
    return segment.substr(1, segment.size() - (isLongName(segment) ? 3 : 2));
}

bool matches(Segments pattern, Segments path, Parameters& parameters);

/// Assigns more and more parts of `path` to the first element of `pattern` until the rest matches.
bool matchesLongName(Segments pattern, Segments path, Parameters& parameters) {
    std::string taken;
    for (std::size_t count = 1; count <= path.size(); ++count) {
        if (count > 1) taken += '/';
        taken += path[count - 1];
        if (taken.empty() || !matches(pattern.subspan(1), path.subspan(count), parameters)) continue;
        parameters[nameOf(pattern.front())] = taken;
        return true;
    }
    return false;
}

bool matches(Segments pattern, Segments path, Parameters& parameters) {
    if (pattern.empty() || path.empty()) return pattern.empty() && path.empty();
    const auto& segment = pattern.front();
    if (isLongName(segment)) return matchesLongName(pattern, path, parameters);
    if (isName(segment) ? path.front().empty() : path.front() != segment) return false;
    if (!matches(pattern.subspan(1), path.subspan(1), parameters)) return false;
    if (isName(segment)) parameters[nameOf(segment)] = path.front();
    return true;
}

}  // namespace

void EndpointRouter::add(std::string name, std::string method, std::string pattern, Handler handler) {
    endpoints_.push_back({std::move(name), std::move(method), std::move(pattern), std::move(handler)});
}

void EndpointRouter::addAdministrative(std::string name, std::string method, std::string pattern, Handler handler) {
    add(std::move(name), std::move(method), std::move(pattern), std::move(handler));
    endpoints_.back().isAdministrative = true;
}

EndpointRouter::Match EndpointRouter::match(const ServiceRequest& request) const {
    Match match;
    const auto path = pathSegments(request.path);
    for (const auto& endpoint : endpoints_) {
        Parameters parameters;
        if (!matches(pathSegments(endpoint.pattern), path, parameters)) continue;
        if (endpoint.method == request.method) return {&endpoint, std::move(parameters), {}};
        match.otherMethods.insert(endpoint.method);
    }
    return match;
}

bool EndpointRouter::hasName(const std::string& name) const {
    return std::any_of(endpoints_.begin(), endpoints_.end(), [&name](const Endpoint& endpoint) {
        return !endpoint.isAdministrative && endpoint.name == name;
    });
}

}  // namespace vorlane::service
