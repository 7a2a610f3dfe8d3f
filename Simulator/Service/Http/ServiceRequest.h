#pragma once

#include <map>
#include <optional>
#include <string>

namespace vorlane::service {

/// Order of header names: without regard to case.
struct HeaderOrder {
    bool operator()(const std::string& left, const std::string& right) const;
};

/// One HTTP request as the service received it. A plain value.
struct ServiceRequest {
    using Headers = std::map<std::string, std::string, HeaderOrder>;

    /// The request of this method and target (path and query, percent-encoded).
    static ServiceRequest make(std::string method, std::string target);

    std::string method;
    /// As sent, percent-encoded.
    std::string path;
    /// Decoded.
    std::map<std::string, std::string> query;
    /// Headers of one name are joined by ", ".
    Headers headers;
    std::string body;
    /// The status that refuses a body which could not be read whole (400, 413); nothing when it could.
    std::optional<int> bodyFailure;
    /// When it arrived, in seconds since 1970.
    double time = 0;

    /// Nothing for a header that was not sent.
    std::optional<std::string> header(const std::string& name) const;
    /// Nothing for a name that does not stand in the query.
    std::optional<std::string> queryValue(const std::string& name) const;
};

}  // namespace vorlane::service
