#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// What stands in the two forms of a geofence: its description, as the service sends it, and the record that the file
/// keeps of it. Numbers that arrive as texts are read, and the reverse.
struct VLGeoRegionRecord {
    static constexpr const char* kIdentifierKey = "identifier";
    static constexpr const char* kIsInRegionKey = "in_region";
    static constexpr const char* kEnterTimestampKey = "VLEnterRegionTimestamp";
    static constexpr const char* kExitTimestampKey = "VLExitRegionTimestamp";

    /// Whether a description has what monitoring needs: an identifier, a centre on the globe and a positive radius.
    static bool isUsable(const Dictionary& description);

    /// The record of a region that was never entered nor left: both happened a day ago.
    static Dictionary recordOf(const Dictionary& description, double now);

    /// "(null)" when there is none.
    static std::string nameOf(const Dictionary& record);
    /// 0 when there is none.
    static double numberIn(const Dictionary& record, const char* key);
    /// The value when it is a text or a number, which is what a property list keeps as it is.
    static std::optional<Value> plainValue(const Dictionary& dictionary, const char* key);
};

}  // namespace vorlane
