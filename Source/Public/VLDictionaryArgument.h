#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "Public/VLExport.h"
#include "Public/VLStringArgument.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// A dictionary parameter of `Vorlane`: takes a `Dictionary`, or fields in braces, for which `VLValue.h` need not be
/// included: `{{"drink", "coffee"}, {"cups", 2}, {"extras", {{"milk", true}}}}`. `{}` is the empty dictionary. Of two
/// fields with one key the first counts.
///
/// Refers to the `Dictionary` that it was made from, so it is of use within one call only.
class VORLANE_EXPORT VLDictionaryArgument {
public:
    // NOLINTBEGIN(google-explicit-constructor): the conversions are the purpose of these classes.

    /// One key and its value: a string, number, boolean, `nullptr` (JSON null), dictionary, `Array` or `Value`.
    class VORLANE_EXPORT Field {
    public:
        Field(VLStringArgument key, const VLStringArgument& value);
        Field(VLStringArgument key, const VLDictionaryArgument& value);

        template <class Number>
        requires std::is_arithmetic_v<Number> Field(VLStringArgument key, Number number)
            : Field(Made(), std::move(key), valueOf(widened(number))) {}

        template <std::same_as<std::nullptr_t> Null>
        Field(VLStringArgument key, Null /*null*/) : Field(Made(), std::move(key), nullValue()) {}

        template <class T>
        requires std::same_as<T, Value> || std::same_as<T, Array> Field(VLStringArgument key, const T& value)
            : Field(Made(), std::move(key), valueOf(value)) {}

    private:
        friend class VLDictionaryArgument;
        using Shared = std::shared_ptr<const Value>;
        /// Keeps this constructor apart from the public ones.
        struct Made {};

        Field(Made, VLStringArgument key, Shared value);

        template <class Number>
        static auto widened(Number number) {
            if constexpr (std::same_as<Number, bool>) {
                return number;
            } else if constexpr (std::is_floating_point_v<Number>) {
                return static_cast<double>(number);
            } else if constexpr (std::is_signed_v<Number>) {
                return static_cast<std::int64_t>(number);
            } else {
                return static_cast<std::uint64_t>(number);
            }
        }

        static Shared valueOf(bool value);
        static Shared valueOf(std::int64_t value);
        static Shared valueOf(std::uint64_t value);
        static Shared valueOf(double value);
        static Shared valueOf(const Value& value);
        static Shared valueOf(const Array& value);
        static Shared nullValue();

        std::string key_;
        Shared value_;
    };

    VLDictionaryArgument();
    VLDictionaryArgument(std::initializer_list<Field> fields);
    template <std::same_as<Dictionary> Given>
    VLDictionaryArgument(const Given& dictionary) : dictionary_(&dictionary) {}
    // NOLINTEND(google-explicit-constructor)
    ~VLDictionaryArgument();

    VLDictionaryArgument(const VLDictionaryArgument&) = delete;
    VLDictionaryArgument& operator=(const VLDictionaryArgument&) = delete;

    const Dictionary& dictionary() const { return *dictionary_; }

private:
    friend class VLOptionalDictionaryArgument;

    std::shared_ptr<const Dictionary> own_;
    const Dictionary* dictionary_;
};

}  // namespace vorlane
