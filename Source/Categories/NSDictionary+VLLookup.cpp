#include "Categories/NSDictionary+VLLookup.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <vector>

namespace vorlane {

const Value* valueForKey(const Dictionary& dictionary, const std::string& key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : &found->second;
}

std::optional<std::string> stringForKey(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    if (!value || !value->is_string()) return std::nullopt;
    return value->get_ref<const std::string&>();
}

std::optional<double> numberForKey(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    if (!value || !value->is_number()) return std::nullopt;
    return value->get<double>();
}

std::optional<std::int64_t> integerForKey(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    return value ? integerValue(*value) : std::nullopt;
}

std::optional<bool> boolForKey(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    if (!value) return std::nullopt;
    if (value->is_boolean()) return value->get<bool>();
    if (value->is_number()) return value->get<double>() != 0;
    return std::nullopt;
}

std::optional<Data> dataForKey(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    if (!value || !value->is_binary()) return std::nullopt;
    return static_cast<const Data&>(value->get_binary());
}

const Dictionary* dictionaryForKey(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    return value ? value->get_ptr<const Dictionary*>() : nullptr;
}

const Array* arrayForKey(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    return value ? value->get_ptr<const Array*>() : nullptr;
}

std::optional<std::int64_t> integerValue(const Value& value) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        return number > static_cast<std::uint64_t>(Limits::max()) ? Limits::max() : static_cast<std::int64_t>(number);
    }
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (!value.is_number_float()) return std::nullopt;
    const auto number = value.get<double>();
    constexpr double kBeyond = 9223372036854775808.0;
    if (std::isnan(number)) return 0;
    if (number >= kBeyond) return Limits::max();
    return number <= -kBeyond ? Limits::min() : static_cast<std::int64_t>(number);
}

std::optional<std::string> stringValue(const Value& value) {
    if (value.is_number_unsigned()) return fmt::format("{}", value.get<std::uint64_t>());
    if (value.is_number_integer()) return fmt::format("{}", value.get<std::int64_t>());
    if (value.is_number_float()) return fmt::format("{}", value.get<double>());
    if (value.is_boolean()) return value.get<bool>() ? "1" : "0";
    return std::nullopt;
}

void vl_removeNulls(Value& value) {
    std::vector<Value*> pending{&value};
    while (!pending.empty()) {
        Value* container = pending.back();
        pending.pop_back();
        if (auto* dictionary = container->get_ptr<Dictionary*>()) {
            std::erase_if(*dictionary, [](const auto& entry) { return entry.second.is_null(); });
        } else if (auto* array = container->get_ptr<Array*>()) {
            std::erase_if(*array, [](const Value& element) { return element.is_null(); });
        }
        if (!container->is_structured()) continue;
        for (auto& element : *container) pending.push_back(&element);
    }
}

}  // namespace vorlane
