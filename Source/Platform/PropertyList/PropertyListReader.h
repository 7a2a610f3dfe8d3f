#pragma once

#include <optional>

#include "Public/VLValue.h"

namespace vorlane {

/// Reads property lists by libplist, from bytes that nobody has vouched for.
class PropertyListReader {
public:
    /// The root of an XML or binary list; nothing when the bytes are none, or nested deeper than `limit`. What a
    /// `Value` has no kind for is left out of the array or dictionary that it stands in.
    static std::optional<Value> read(const Data& bytes, int limit);
};

}  // namespace vorlane
