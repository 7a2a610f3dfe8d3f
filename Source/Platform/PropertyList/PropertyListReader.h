#pragma once

#include <optional>

#include "Public/VLValue.h"

namespace vorlane {

/// Reads property lists from bytes that nobody has vouched for: XML by XMLPropertyListReader, binary by libplist.
class PropertyListReader {
public:
    /// Returns the root of an XML or binary list; `nullopt` if the bytes are neither, or are beyond the bounds of
    /// DocumentLimits. What a `Value` has no kind for is left out of the array or dictionary that it stands in.
    static std::optional<Value> read(const Data& bytes);
};

}  // namespace vorlane
