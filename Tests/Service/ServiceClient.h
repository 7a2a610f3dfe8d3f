#pragma once

#include <map>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// An answer of the service.
struct ServiceAnswer {
    /// 0 if no complete answer arrived.
    int status = 0;
    std::string body;
    std::map<std::string, std::string> headers;

    /// The body as JSON; a discarded value if it is not JSON.
    Value json() const { return Value::parse(body, nullptr, false); }
};

/// Sends each request on a connection of its own. Any thread.
class ServiceClient {
public:
    explicit ServiceClient(int port) : port_(port) {}

    ServiceAnswer get(const std::string& target) const;
    ServiceAnswer del(const std::string& target) const;
    ServiceAnswer post(const std::string& target, const std::string& body, const std::string& contentType) const;
    ServiceAnswer put(const std::string& target, const Value& json) const;
    ServiceAnswer options(const std::string& target) const;

    ServiceAnswer postJSON(const std::string& target, const Value& json) const;
    /// Sends a form, as apps report sessions and events.
    ServiceAnswer postForm(const std::string& target, const Value& payload) const;

private:
    // Fixed at construction.
    const int port_;
};

}  // namespace vorlane::service
