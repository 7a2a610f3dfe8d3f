#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "Public/VLValue.h"

namespace vorlane::service {

class EndpointRouter;
struct EndpointCall;
struct ServiceRequest;
struct StoreFilter;

/// The app in the path of the call.
const std::string& appKeyOf(const EndpointCall& call);

/// Adds `GET /_admin/name`, which returns under `name` the result of `list` for an app or a user, or for all.
void addList(EndpointRouter& router, const std::string& name, std::function<Array(const StoreFilter& filter)> list);

/// Throws MalformedRequest if the query has any other name, so that a misspelt name does not go unnoticed.
void requireKnownNames(const ServiceRequest& request, std::initializer_list<std::string_view> names);

/// Returns `nullopt` if the query does not have the name. Throws MalformedRequest for anything but an integer from 0.
std::optional<std::int64_t> integerInQuery(const ServiceRequest& request, const std::string& name);

/// As `integerInQuery()`, up to 18446744073709551615.
std::optional<std::uint64_t> unsignedInQuery(const ServiceRequest& request, const std::string& name);

/// Returns `nullopt` if the query does not have the name. Throws MalformedRequest for anything but a number from 0 to
/// `most`.
std::optional<double> numberInQuery(const ServiceRequest& request, const std::string& name, double most);

}  // namespace vorlane::service
