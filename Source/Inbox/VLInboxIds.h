#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_set>

namespace vorlane {

/// Hashes message ids with a seed that is drawn once for each process. The service chooses the ids, so with a
/// predictable hash it could choose ids that all collide.
struct VLInboxIdHash {
    std::size_t operator()(std::uint64_t notificationId) const;
};

using VLInboxIds = std::unordered_set<std::uint64_t, VLInboxIdHash>;

}  // namespace vorlane
