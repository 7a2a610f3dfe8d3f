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

/// The app that the call's path names.
const std::string& appKeyOf(const EndpointCall& call);

/// Has `GET /_admin/name` list under `name` what `list` gives for an app or a user, or for all.
void addList(EndpointRouter& router, const std::string& name, std::function<Array(const StoreFilter& filter)> list);

/// Throws MalformedRequest when the query has a name that is none of these, which would otherwise go unnoticed.
void requireKnownNames(const ServiceRequest& request, std::initializer_list<std::string_view> names);

/// Nothing when the query does not have the name. Throws MalformedRequest for what is no whole number from 0 on.
std::optional<std::int64_t> integerInQuery(const ServiceRequest& request, const std::string& name);

/// The same up to 18446744073709551615.
std::optional<std::uint64_t> unsignedInQuery(const ServiceRequest& request, const std::string& name);

/// Nothing when the query does not have the name. Throws MalformedRequest for what is no number from 0 to `most`.
std::optional<double> numberInQuery(const ServiceRequest& request, const std::string& name, double most);

}  // namespace vorlane::service
