#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/CLBeacon.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLBeaconContentData;

/// One rule for messages, read once so that many beacons can be tried by many rules. Immutable.
///
/// Numbers may stand as text and texts as numbers; what is of another kind counts as absent.
class VLBeaconRule {
public:
    explicit VLBeaconRule(const Dictionary& rule);

    bool appliesTo(const CLBeacon& beacon) const;

    /// Overwrites what the rule tells, and makes it the current rule of the settings for the limit and the period that
    /// it carries.
    void overwrite(VLBeaconContentData& data) const;

    /// A number, or a text that is one, its fraction cut off and held to the range of 64 bits.
    static std::optional<std::int64_t> integerIn(const Dictionary& rule, const char* key);
    /// The low 16 bits of the integer value; 0 for what has none.
    static std::uint16_t shortIn(const Dictionary& rule, const char* key);
    /// Whether the value is "*".
    static bool isAny(const Dictionary& rule, const char* key);

private:
    /// What a major or minor has to be.
    struct Pattern {
        bool isAny = false;
        // Nothing fits no beacon.
        std::optional<std::uint16_t> number;

        bool fits(std::uint16_t beaconNumber) const { return isAny || number == beaconNumber; }
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
