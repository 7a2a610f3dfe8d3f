#include "Simulator/Service/Admin/AdminQuery.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/ServiceRequest.h"
#include "Simulator/Service/Http/ServiceResponse.h"
#include "Simulator/Service/Store/StoreFilter.h"

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
    // Written so that NaN fails, too.
    if (isWhole && number >= Number{} && number <= most) return number;
    throw MalformedRequest(fmt::format("\"{}\" is not a number from 0 to {}", name, most));
}

}  // namespace

const std::string& appKeyOf(const EndpointCall& call) { return call.parameters.at("appKey"); }

void addList(EndpointRouter& router, const std::string& name, std::function<Array(const StoreFilter& filter)> list) {
    router.addAdministrative(name, "GET", "/_admin/" + name, [name, list = std::move(list)](EndpointCall& call) {
        requireKnownNames(call.request, {"appKey", "trackingId"});
        const StoreFilter filter{call.request.queryValue("appKey"), call.request.queryValue("trackingId")};
        return ServiceResponse::json(Value(Dictionary{{name, Value(list(filter))}}));
    });
}

void requireKnownNames(const ServiceRequest& request, std::initializer_list<std::string_view> names) {
    for (const auto& [name, value] : request.query) {
        if (std::find(names.begin(), names.end(), name) == names.end())
            throw MalformedRequest(fmt::format("unknown name \"{}\"", name));
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
