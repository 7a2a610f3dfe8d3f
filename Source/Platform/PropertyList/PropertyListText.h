#pragma once

#include <string>
#include <string_view>

namespace vorlane {

/// Texts going into and coming out of property lists.
class PropertyListText {
public:
    /// The text with U+FFFD for every byte that is no part of a UTF-8 character.
    static std::string wellFormed(std::string_view text);

    /// The same, with U+FFFD also for the characters that XML 1.0 cannot carry: control characters other than tab and
    /// line ends, U+FFFE and U+FFFF.
    static std::string fitForXML(std::string_view text);
};

}  // namespace vorlane
