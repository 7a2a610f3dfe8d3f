#pragma once

#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// Property lists: strings, numbers, booleans, data, arrays and dictionaries as files.
class VORLANE_EXPORT NSPropertyListSerialization {
public:
    /// Reads XML or binary. Nothing when the bytes are no property list, or one that is nested deeper than 512. A date
    /// reads as its seconds since 1970.
    static std::optional<Value> propertyListWithData(const Data& bytes);

    /// Writes XML. Null, which property lists cannot hold, is dropped wherever it stands; in a string, what XML cannot
    /// carry is replaced by U+FFFD.
    static Data dataWithPropertyList(const Value& propertyList);

    /// `dictionaryWithContentsOfFile:` gives the file's root dictionary; nothing when the file is missing, is no
    /// property list or has another root.
    static std::optional<Dictionary> dictionaryWithContentsOfFile(const std::string& path);

    /// `writeToFile:atomically:` writes the dictionary as XML, replacing the file whole. Returns whether it succeeded.
    static bool writeToFile(const Dictionary& dictionary, const std::string& path);
};

}  // namespace vorlane
