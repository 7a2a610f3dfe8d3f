#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <string>

#include "Public/VLStringArgument.h"

namespace vorlane {

/// What a `VLOptionalStringArgument` is made from when there is no string.
template <class T>
concept VLNoString = std::same_as<T, std::nullopt_t> || std::same_as<T, std::nullptr_t>;

/// An optional string parameter of `Vorlane`: takes what `VLStringArgument` takes, a `std::optional<std::string>`,
/// `std::nullopt` or `nullptr`. `nullptr` and a null `const char*` mean `nullopt`. Braces do not compile.
class VLOptionalStringArgument {
public:
    // NOLINTBEGIN(google-explicit-constructor): the conversions are the purpose of this class.
    template <VLStringLike String>
    VLOptionalStringArgument(const String& string) {
        if constexpr (std::convertible_to<const String&, const char*>) {
            const char* characters = string;
            if (!characters) return;
        }
        string_ = VLStringArgument::stringFrom(string);
    }

    template <std::same_as<std::optional<std::string>> Optional>
    VLOptionalStringArgument(const Optional& string) : string_(string) {}

    template <VLNoString None>
    VLOptionalStringArgument(const None& /*none*/) {}
    // NOLINTEND(google-explicit-constructor)

    const std::optional<std::string>& string() const { return string_; }

private:
    std::optional<std::string> string_;
};

}  // namespace vorlane
