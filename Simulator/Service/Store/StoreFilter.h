#pragma once

#include <optional>
#include <string>

namespace vorlane::service {

/// Selects stored rows. A field that is `nullopt` matches every row.
struct StoreFilter {
    std::optional<std::string> appKey;
    std::optional<std::string> trackingId;
};

}  // namespace vorlane::service
