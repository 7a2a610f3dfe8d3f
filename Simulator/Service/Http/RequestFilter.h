#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace vorlane::service {

struct RecordedRequest;

/// Which of the recorded requests are meant; what is nothing admits all. A plain value.
struct RequestFilter {
    std::optional<std::string> endpoint;
    std::optional<std::string> method;
    /// As sent, percent-encoded.
    std::optional<std::string> path;
    std::optional<std::string> appKey;
    std::optional<std::string> trackingId;
    std::optional<std::int64_t> status;
    /// Only later ones than the one of this number.
    std::int64_t since = 0;

    bool admits(const RecordedRequest& record) const;
};

}  // namespace vorlane::service
