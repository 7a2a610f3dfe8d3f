#include "Simulator/Service/BeaconPattern.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

#include "Simulator/Service/MalformedRequest.h"
#include "Simulator/Service/RequestPayload.h"

namespace vorlane::service {
namespace {

constexpr const char* kAny = "*";

char capital(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

bool isUUID(const std::string& capitals) {
    constexpr std::size_t kLength = 36;
    if (capitals.size() != kLength) return false;
    for (std::size_t i = 0; i < kLength; ++i) {
        const bool isDash = i == 8 || i == 13 || i == 18 || i == 23;
        const char character = capitals[i];
        const bool isDigit = (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F');
        if (isDash ? character != '-' : !isDigit) return false;
    }
    return true;
}

std::string uuidOf(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), capital);
    if (text != kAny && !isUUID(text)) throw MalformedRequest(fmt::format("\"{}\" is no UUID", text));
    return text;
}

/// Without leading zeros, so that equal numbers are equal texts.
std::string numberOf(const std::string& text) {
    if (text == kAny) return text;
    std::uint16_t number = 0;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end)
        throw MalformedRequest(fmt::format("\"{}\" is no number from 0 to 65535", text));
    return std::to_string(number);
}

}  // namespace

BeaconPattern BeaconPattern::fromTexts(const std::string& uuid, const std::string& major, const std::string& minor) {
    return {uuidOf(uuid), numberOf(major), numberOf(minor)};
}

BeaconPattern BeaconPattern::fromPayload(const Dictionary& payload) {
    const auto uuid = requiredText(payload, "uuid");
    if (uuid == kAny) throw MalformedRequest("\"*\" is no UUID");
    return fromTexts(uuid, requiredTextOrNumber(payload, "major"), requiredTextOrNumber(payload, "minor"));
}

bool BeaconPattern::isExact() const { return uuid != kAny && major != kAny && minor != kAny; }

}  // namespace vorlane::service
