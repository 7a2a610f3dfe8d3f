#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace vorlane {

/// What a `VLStringArgument` is made from: a string literal, `const char*`, `std::string` or `std::string_view`.
template <class T>
concept VLStringLike = std::convertible_to<const T&, std::string_view> && !std::is_null_pointer_v<T>;

/// A string parameter of `Vorlane`. A null `const char*` is the empty string; `nullptr` and braces do not compile.
class VLStringArgument {
public:
    template <VLStringLike String>
    // NOLINTNEXTLINE(google-explicit-constructor): the conversion is the purpose of this class.
    VLStringArgument(const String& string) : string_(stringFrom(string)) {}

    const std::string& string() const { return string_; }

    /// The string, or "" for a null pointer.
    template <VLStringLike String>
    static std::string stringFrom(const String& string) {
        if constexpr (std::convertible_to<const String&, const char*>) {
            const char* characters = string;
            return characters ? std::string(characters) : std::string();
        } else {
            return std::string(std::string_view(string));
        }
    }

private:
    std::string string_;
};

}  // namespace vorlane
