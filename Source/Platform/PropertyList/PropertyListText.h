#pragma once

#include <string>
#include <string_view>

namespace vorlane {

/// Strings on their way into and out of property lists.
class PropertyListText {
public:
    /// Whether the string is printable ASCII, which needs no repair. Most strings are.
    static bool isPlain(std::string_view text);

    /// Returns the string with U+FFFD for every byte that is not part of a UTF-8 character.
    static std::string wellFormed(std::string_view text);

    /// The same, with U+FFFD also for the characters that XML 1.0 cannot hold: control characters other than tab and
    /// line ends, U+FFFE and U+FFFF.
    static std::string fitForXML(std::string_view text);
};

}  // namespace vorlane
