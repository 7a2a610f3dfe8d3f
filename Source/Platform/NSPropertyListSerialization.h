#pragma once

#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// Property lists: strings, numbers, booleans, data, arrays and dictionaries as files.
class VORLANE_EXPORT NSPropertyListSerialization {
public:
    /// Reads XML or binary. Returns `nullopt` if the bytes are no property list, or are beyond the bounds of
    /// DocumentLimits. A date becomes its seconds since 1970.
    static std::optional<Value> propertyListWithData(const Data& bytes);

    /// Writes XML. Left out are null, numbers that are not finite, and arrays and dictionaries nested deeper than 512;
    /// in a string, U+FFFD replaces what XML cannot hold. Returns no bytes for a root that a property list cannot hold,
    /// or beyond the bounds of DocumentLimits.
    static Data dataWithPropertyList(const Value& propertyList);
    static Data dataWithPropertyList(const Dictionary& propertyList);
    static Data dataWithPropertyList(const Array& propertyList);

    /// `dictionaryWithContentsOfFile:` returns the file's root dictionary; `nullopt` if the file is missing, is no
    /// property list or has another root.
    static std::optional<Dictionary> dictionaryWithContentsOfFile(const std::string& path);

    /// `writeToFile:atomically:` writes the dictionary as XML and replaces the file whole. Returns whether it
    /// succeeded. Nothing makes the file durable: the library's own files are PropertyListFile objects.
    static bool writeToFile(const Dictionary& dictionary, const std::string& path);
};

}  // namespace vorlane
