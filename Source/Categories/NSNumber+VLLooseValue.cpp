#include "Categories/NSNumber+VLLooseValue.h"

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

#include "Categories/NSDictionary+VLLookup.h"

namespace vorlane {

namespace {

std::optional<double> numberWithDecimalString(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    double number = 0;
    const auto* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<double> vl_looseNumber(const Value* value) {
    std::optional<double> number;
    if (value && value->is_number()) number = value->get<double>();
    if (value && value->is_string()) number = numberWithDecimalString(value->get_ref<const std::string&>());
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<std::string> vl_looseText(const Value* value) {
    if (value && value->is_string()) return value->get<std::string>();
    return value && value->is_number() ? stringValue(*value) : std::nullopt;
}

}  // namespace vorlane
