#pragma once

#include <optional>
#include <string>

namespace vorlane::service {

/// Which of the stored rows to list; what is nothing admits all. A plain value.
struct StoreFilter {
    std::optional<std::string> appKey;
    std::optional<std::string> trackingId;
};

}  // namespace vorlane::service
