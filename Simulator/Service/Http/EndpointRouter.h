#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Service/Http/ServiceResponse.h"

namespace vorlane::service {

struct EndpointCall;
struct ServiceRequest;

/// The table of endpoints. Filled on one thread; used on any thread afterwards.
class EndpointRouter {
public:
    /// Answers a request. A thrown MalformedRequest is answered with 400, any other exception with 500. May run on
    /// several threads at once.
    using Handler = std::function<ServiceResponse(EndpointCall&)>;

    struct Endpoint {
        std::string name;
        std::string method;
        std::string pattern;
        Handler handler;
        /// An endpoint for the operator: its requests are not recorded, and scripted faults do not apply.
        bool isAdministrative = false;
    };

    struct Match {
        /// Null if no endpoint has this path and method.
        const Endpoint* endpoint = nullptr;
        std::map<std::string, std::string> parameters;
        /// The methods of the endpoints that have this path, if none has this method.
        std::set<std::string> otherMethods;
    };

    /// In a pattern, "{name}" matches one part of the path and "{name*}" one or more parts, as few as possible. The
    /// first matching endpoint applies. Parts are compared after decoding.
    void add(std::string name, std::string method, std::string pattern, Handler handler);
    void addAdministrative(std::string name, std::string method, std::string pattern, Handler handler);

    Match match(const ServiceRequest& request) const;
    /// Whether an endpoint for apps has this name.
    bool hasName(const std::string& name) const;
    const std::vector<Endpoint>& endpoints() const { return endpoints_; }

private:
    std::vector<Endpoint> endpoints_;
};

}  // namespace vorlane::service
