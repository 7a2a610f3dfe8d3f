#include "Simulator/Service/Endpoints/BeaconPattern.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>

#include "Platform/CLBeaconRegion.h"
#include "Platform/Internal/ASCIICase.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"

namespace vorlane::service {
namespace {

constexpr const char* kAny = "*";

std::string uuidOf(const std::string& text) {
    std::string uuid = capitalised(text);
    if (uuid != kAny && !CLBeaconRegion::isUUID(uuid))
        throw MalformedRequest(fmt::format("\"{}\" is not a UUID", uuid));
    return uuid;
}

/// Without leading zeros, so that equal numbers have equal strings.
std::string numberOf(const std::string& text) {
    if (text == kAny) return text;
    std::uint16_t number = 0;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end)
        throw MalformedRequest(fmt::format("\"{}\" is not a number from 0 to 65535", text));
    return std::to_string(number);
}

}  // namespace

BeaconPattern BeaconPattern::fromTexts(const std::string& uuid, const std::string& major, const std::string& minor) {
    return {uuidOf(uuid), numberOf(major), numberOf(minor)};
}

BeaconPattern BeaconPattern::fromPayload(const Dictionary& payload) {
    const auto uuid = requiredText(payload, "uuid");
    if (uuid == kAny) throw MalformedRequest("\"*\" is not a UUID");
    return fromTexts(uuid, requiredTextOrNumber(payload, "major"), requiredTextOrNumber(payload, "minor"));
}

bool BeaconPattern::isExact() const { return uuid != kAny && major != kAny && minor != kAny; }

}  // namespace vorlane::service
