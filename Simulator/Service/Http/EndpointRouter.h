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

/// The table of endpoints. Filled once; from then on any thread.
class EndpointRouter {
public:
    /// Answers a request. May throw MalformedRequest, which is answered with 400, and anything else, answered with 500.
    /// Any thread, several at once.
    using Handler = std::function<ServiceResponse(EndpointCall&)>;

    struct Endpoint {
        std::string name;
        std::string method;
        std::string pattern;
        Handler handler;
        /// An endpoint for the operator: its requests are not recorded, and no faults happen to them.
        bool isAdministrative = false;
    };

    struct Match {
        /// Nothing when no endpoint has this path and method.
        const Endpoint* endpoint = nullptr;
        std::map<std::string, std::string> parameters;
        /// The methods that this path does have, when it is only the method that fits none.
        std::set<std::string> otherMethods;
    };

    /// In a pattern "{name}" stands for one part of the path, "{name*}" for one or more, as few as possible; the
    /// first endpoint that fits wins. Parts are compared after decoding.
    void add(std::string name, std::string method, std::string pattern, Handler handler);
    void addAdministrative(std::string name, std::string method, std::string pattern, Handler handler);

    Match match(const ServiceRequest& request) const;
    /// Whether an endpoint of an app's has this name.
    bool hasName(const std::string& name) const;
    const std::vector<Endpoint>& endpoints() const { return endpoints_; }

private:
    std::vector<Endpoint> endpoints_;
};

}  // namespace vorlane::service
