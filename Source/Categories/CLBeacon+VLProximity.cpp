#include "Categories/CLBeacon+VLProximity.h"

#include <fmt/format.h>

#include <cstdint>
#include <iterator>

#include "Public/VLLog.h"

namespace vorlane {

const char* vl_proximity_unknown() { return "unknown"; }
const char* vl_proximity_immediate() { return "immediate"; }
const char* vl_proximity_near() { return "near"; }
const char* vl_proximity_far() { return "far"; }

const char* vl_getRangeStringForBeacon(const CLBeacon& beacon) {
    switch (beacon.proximity) {
        case CLProximity::Unknown:
            return vl_proximity_unknown();
        case CLProximity::Immediate:
            return vl_proximity_immediate();
        case CLProximity::Near:
            return vl_proximity_near();
        case CLProximity::Far:
            return vl_proximity_far();
    }
    logMessage(VLLogLevel::Error, fmt::format("Unknown proximity value \"{}\" for beacon: {}",
                                              static_cast<std::int64_t>(beacon.proximity), vl_description(beacon)));
    return vl_proximity_unknown();
}

std::string vl_majorMinorAsString(const CLBeacon& beacon) { return fmt::format("{}_{}", beacon.major, beacon.minor); }

std::string vl_description(const CLBeacon& beacon) {
    return fmt::format("CLBeacon (uuid:{}, major:{}, minor:{}, proximity:{}, accuracy:{:.2f})", beacon.proximityUUID,
                       beacon.major, beacon.minor, static_cast<std::int64_t>(beacon.proximity), beacon.accuracy);
}

std::string vl_description(const std::vector<CLBeacon>& beacons) {
    std::string text = "[";
    for (const auto& beacon : beacons) {
        fmt::format_to(std::back_inserter(text), "{}{}", text.size() > 1 ? ", " : "", vl_description(beacon));
    }
    return text + "]";
}

}  // namespace vorlane
