#include "Public/VLDictionaryArgument.h"

#include "Public/VLValue.h"

namespace vorlane {

namespace {

/// Never destroyed, so that a host's static object may still use it.
const Dictionary& noFields() {
    static const auto* const empty = new Dictionary;
    return *empty;
}

}  // namespace

VLDictionaryArgument::Field::Field(VLStringArgument key, const VLStringArgument& value)
    : Field(Made(), std::move(key), std::make_shared<const Value>(value.string())) {}

VLDictionaryArgument::Field::Field(VLStringArgument key, const VLDictionaryArgument& value)
    : Field(Made(), std::move(key), std::make_shared<const Value>(value.dictionary())) {}

VLDictionaryArgument::Field::Field(Made, VLStringArgument key, Shared value)
    : key_(key.string()), value_(std::move(value)) {}

VLDictionaryArgument::Field::Shared VLDictionaryArgument::Field::valueOf(bool value) {
    return std::make_shared<const Value>(value);
}

VLDictionaryArgument::Field::Shared VLDictionaryArgument::Field::valueOf(std::int64_t value) {
    return std::make_shared<const Value>(value);
}

VLDictionaryArgument::Field::Shared VLDictionaryArgument::Field::valueOf(std::uint64_t value) {
    return std::make_shared<const Value>(value);
}

VLDictionaryArgument::Field::Shared VLDictionaryArgument::Field::valueOf(double value) {
    return std::make_shared<const Value>(value);
}

VLDictionaryArgument::Field::Shared VLDictionaryArgument::Field::valueOf(const Value& value) {
    return std::make_shared<const Value>(value);
}

VLDictionaryArgument::Field::Shared VLDictionaryArgument::Field::valueOf(const Array& value) {
    return std::make_shared<const Value>(value);
}

VLDictionaryArgument::Field::Shared VLDictionaryArgument::Field::nullValue() { return std::make_shared<const Value>(); }

VLDictionaryArgument::VLDictionaryArgument() : dictionary_(&noFields()) {}

VLDictionaryArgument::VLDictionaryArgument(std::initializer_list<Field> fields) {
    Dictionary dictionary;
    for (const auto& field : fields) dictionary.emplace(field.key_, *field.value_);
    own_ = std::make_shared<const Dictionary>(std::move(dictionary));
    dictionary_ = own_.get();
}

VLDictionaryArgument::~VLDictionaryArgument() = default;

}  // namespace vorlane
