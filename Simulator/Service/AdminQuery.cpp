#include "Simulator/Service/AdminQuery.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "Simulator/Service/MalformedRequest.h"
#include "Simulator/Service/ServiceRequest.h"

namespace vorlane::service {
namespace {

template <class Number>
std::optional<Number> numberWithin(const ServiceRequest& request, const std::string& name, Number most) {
    const auto text = request.queryValue(name);
    if (!text) return std::nullopt;
    Number number{};
    const auto* end = text->data() + text->size();
    const auto result = std::from_chars(text->data(), end, number);
    const bool isWhole = result.ec == std::errc() && result.ptr == end;
    // Written so that what is not a number at all fails, too.
    if (isWhole && number >= Number{} && number <= most) return number;
    throw MalformedRequest(fmt::format("\"{}\" is no number from 0 to {}", name, most));
}

}  // namespace

void requireKnownNames(const ServiceRequest& request, std::initializer_list<std::string_view> names) {
    for (const auto& [name, value] : request.query) {
        if (std::find(names.begin(), names.end(), name) == names.end())
            throw MalformedRequest(fmt::format("there is no \"{}\" here", name));
    }
}

std::optional<std::int64_t> integerInQuery(const ServiceRequest& request, const std::string& name) {
    return numberWithin<std::int64_t>(request, name, INT64_MAX);
}

std::optional<std::uint64_t> unsignedInQuery(const ServiceRequest& request, const std::string& name) {
    return numberWithin<std::uint64_t>(request, name, UINT64_MAX);
}

std::optional<double> numberInQuery(const ServiceRequest& request, const std::string& name, double most) {
    return numberWithin(request, name, most);
}

}  // namespace vorlane::service
