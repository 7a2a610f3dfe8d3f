#pragma once

#include "Public/VLValue.h"

namespace vorlane {

/// Writes property lists by libplist, such that it and others can read them back.
class PropertyListWriter {
public:
    /// XML; empty for a value that no list can hold. Left out are null, numbers that are not finite, and arrays and
    /// dictionaries nested deeper than `limit`.
    static Data write(const Value& value, int limit);
    static Data write(const Dictionary& dictionary, int limit);
};

}  // namespace vorlane
