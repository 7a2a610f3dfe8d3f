#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/CLBeacon.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLBeaconContentData;

/// One rule for messages, parsed once because every ranged beacon is matched against every rule. Immutable.
///
/// Numbers may be given as strings and strings as numbers. A value of another type counts as absent.
class VLBeaconRule {
public:
    explicit VLBeaconRule(const Dictionary& rule);

    bool appliesTo(const CLBeacon& beacon) const;

    /// Overwrites the values that the rule defines. Makes it the current rule of the settings for the message count and
    /// for the period, if it defines them.
    void overwrite(VLBeaconContentData& data) const;

    /// Reads a number or a numeric string, truncated to an integer and clamped to 64 bits.
    static std::optional<std::int64_t> integerIn(const Dictionary& rule, const char* key);
    /// Returns the low 16 bits of the integer value, or 0 if there is none.
    static std::uint16_t shortIn(const Dictionary& rule, const char* key);
    /// Whether the value is "*".
    static bool isAny(const Dictionary& rule, const char* key);

private:
    /// Matches a major or minor.
    struct Pattern {
        bool isAny = false;
        // `nullopt` matches no beacon.
        std::optional<std::uint16_t> number;

        bool matches(std::uint16_t beaconNumber) const { return isAny || number == beaconNumber; }
    };

    static Pattern patternIn(const Dictionary& rule, const char* key);

    const std::string ruleId_;
    const std::optional<std::string> uuid_;
    const Pattern major_;
    const Pattern minor_;
    const std::optional<std::int64_t> maxRange_;
    const bool isDefaultShown_;
    const std::optional<std::string> defaultMessage_;
    const std::optional<std::int64_t> messageCount_;
    const std::optional<double> timePeriod_;
    const std::optional<std::string> alertRange_;
};

}  // namespace vorlane
