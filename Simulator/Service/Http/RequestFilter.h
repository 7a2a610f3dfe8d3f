#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace vorlane::service {

struct RecordedRequest;

/// Selects recorded requests. A field that is `nullopt` matches every request.
struct RequestFilter {
    std::optional<std::string> endpoint;
    std::optional<std::string> method;
    /// As sent, percent-encoded.
    std::optional<std::string> path;
    std::optional<std::string> appKey;
    std::optional<std::string> trackingId;
    std::optional<std::int64_t> status;
    /// Matches only requests with a higher number.
    std::int64_t since = 0;

    bool admits(const RecordedRequest& record) const;
};

}  // namespace vorlane::service
