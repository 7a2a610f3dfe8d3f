#pragma once

#include <concepts>
#include <initializer_list>
#include <optional>

#include "Public/VLDictionaryArgument.h"
#include "Public/VLExport.h"
#include "Public/VLOptionalStringArgument.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// An optional dictionary parameter of `Vorlane`: takes what `VLDictionaryArgument` takes, a
/// `std::optional<Dictionary>`, `std::nullopt` or `nullptr`. `nullptr` and `{}` mean `nullopt`.
///
/// Refers to the `Dictionary` that it was made from, so it is of use within one call only.
class VORLANE_EXPORT VLOptionalDictionaryArgument {
public:
    VLOptionalDictionaryArgument() = default;

    // NOLINTBEGIN(google-explicit-constructor): the conversions are the purpose of this class.
    VLOptionalDictionaryArgument(std::initializer_list<VLDictionaryArgument::Field> fields)
        : fields_(fields), dictionary_(fields_.dictionary_) {}

    template <VLNoString None>
    VLOptionalDictionaryArgument(const None& /*none*/) {}

    template <std::same_as<Dictionary> Given>
    VLOptionalDictionaryArgument(const Given& dictionary) : dictionary_(&dictionary) {}

    template <std::same_as<std::optional<Dictionary>> Optional>
    VLOptionalDictionaryArgument(const Optional& dictionary) : dictionary_(dictionary ? &*dictionary : nullptr) {}

    // NOLINTEND(google-explicit-constructor)

    VLOptionalDictionaryArgument(const VLOptionalDictionaryArgument&) = delete;
    VLOptionalDictionaryArgument& operator=(const VLOptionalDictionaryArgument&) = delete;

    /// A copy of the dictionary, or `nullopt`.
    std::optional<Dictionary> dictionary() const;

private:
    const VLDictionaryArgument fields_;
    const Dictionary* dictionary_ = nullptr;
};

}  // namespace vorlane
