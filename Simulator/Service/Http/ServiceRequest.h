#pragma once

#include <map>
#include <optional>
#include <string>

namespace vorlane::service {

/// Compares header names without regard to case.
struct HeaderOrder {
    bool operator()(const std::string& left, const std::string& right) const;
};

/// One HTTP request as the service received it.
struct ServiceRequest {
    using Headers = std::map<std::string, std::string, HeaderOrder>;

    /// Makes a request with this method and target (path and query, percent-encoded).
    static ServiceRequest make(std::string method, std::string target);

    std::string method;
    /// As sent, percent-encoded.
    std::string path;
    /// Decoded.
    std::map<std::string, std::string> query;
    /// Values of headers with equal names are joined by ", ".
    Headers headers;
    std::string body;
    /// The status (400 or 413) for a body that could not be read completely; `nullopt` for a complete body.
    std::optional<int> bodyFailure;
    /// The time of arrival, in seconds since 1970.
    double time = 0;

    /// Returns `nullopt` for a header that was not sent.
    std::optional<std::string> header(const std::string& name) const;
    /// Returns `nullopt` for a name that is not in the query.
    std::optional<std::string> queryValue(const std::string& name) const;
};

}  // namespace vorlane::service
