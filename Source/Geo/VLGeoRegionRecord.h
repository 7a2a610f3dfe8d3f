#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// Reads the two forms of a geofence: the description that the service sends, and the record in the file. Numbers may
/// arrive as strings, and strings as numbers.
struct VLGeoRegionRecord {
    static constexpr const char* kIdentifierKey = "identifier";
    static constexpr const char* kIsInRegionKey = "in_region";
    static constexpr const char* kEnterTimestampKey = "VLEnterRegionTimestamp";
    static constexpr const char* kExitTimestampKey = "VLExitRegionTimestamp";

    /// Whether a description has an identifier, a valid centre and a positive radius.
    static bool isUsable(const Dictionary& description);

    /// Returns a new record, with the last enter and exit set to one day ago.
    static Dictionary recordOf(const Dictionary& description, double now);

    /// Returns the name, or "(null)" if there is none.
    static std::string nameOf(const Dictionary& record);
    /// Returns the number, or 0 if there is none.
    static double numberIn(const Dictionary& record, const char* key);
    /// Returns the value if it is a string or a number, which a property list stores unchanged.
    static std::optional<Value> plainValue(const Dictionary& dictionary, const char* key);
};

}  // namespace vorlane
