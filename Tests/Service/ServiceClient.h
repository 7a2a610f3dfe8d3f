#pragma once

#include <map>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// What a client got from the service.
struct ServiceAnswer {
    /// 0 when no answer came, or not all of it.
    int status = 0;
    std::string body;
    std::map<std::string, std::string> headers;

    /// The body as JSON; a discarded value when it is none.
    Value json() const { return Value::parse(body, nullptr, false); }
};

/// Speaks HTTP with a service, one request on a connection. Any thread.
class ServiceClient {
public:
    explicit ServiceClient(int port) : port_(port) {}

    ServiceAnswer get(const std::string& target) const;
    ServiceAnswer del(const std::string& target) const;
    ServiceAnswer post(const std::string& target, const std::string& body, const std::string& contentType) const;
    ServiceAnswer put(const std::string& target, const Value& json) const;
    ServiceAnswer options(const std::string& target) const;

    ServiceAnswer postJSON(const std::string& target, const Value& json) const;
    /// As an app's sessions and events are sent.
    ServiceAnswer postForm(const std::string& target, const Value& payload) const;

private:
    // Fixed at construction.
    const int port_;
};

}  // namespace vorlane::service
