#include "Simulator/Service/Http/RecordedRequest.h"

#include "Simulator/Service/Http/RequestPayload.h"

namespace vorlane::service {
namespace {

template <class Map>
Value object(const Map& texts) {
    Dictionary dictionary;
    for (const auto& [name, text] : texts) dictionary.emplace(name, text);
    return Value(dictionary);
}

}  // namespace

Dictionary RecordedRequest::asDictionary() const {
    Dictionary dictionary;
    dictionary["number"] = number;
    dictionary["time"] = request.time;
    dictionary["endpoint"] = endpoint;
    dictionary["method"] = request.method;
    dictionary["path"] = request.path;
    dictionary["query"] = object(request.query);
    dictionary["headers"] = object(request.headers);
    dictionary["body"] = request.body;
    dictionary["payload"] = payloadOrNull(request);
    dictionary["appKey"] = appKey;
    dictionary["trackingId"] = trackingId;
    dictionary["status"] = status ? Value(*status) : Value(nullptr);
    dictionary["fault"] = fault;
    return dictionary;
}

}  // namespace vorlane::service
