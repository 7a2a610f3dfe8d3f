#pragma once

#include <cstddef>

namespace vorlane {

/// How much one document may hold: far above what the library and its service use, and low enough that no document
/// stops a thread for long or takes much memory. A document beyond a limit is unreadable.
struct DocumentLimits {
    /// Arrays and dictionaries in each other, in any document.
    static constexpr int kDeepestNesting = 512;

    /// Values in an answer of the service, a payload or any other JSON text, counting arrays, dictionaries and what
    /// they hold.
    static constexpr std::size_t kMostValuesInJSON = 100'000;

    /// Values in the remote configuration, which the main thread stores and reads back.
    static constexpr std::size_t kMostValuesInConfiguration = 25'000;

    /// Values in a property list, which may hold what came in several answers. A list beyond it is not written either.
    static constexpr std::size_t kMostValuesInPropertyList = 1'000'000;

    /// Bytes of a property list.
    static constexpr std::size_t kLongestPropertyList = std::size_t{64} << 20U;
};

}  // namespace vorlane
