#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/Http/ServiceResponse.h"

namespace vorlane::service {

/// A scripted fault in the answers of an endpoint.
struct Fault {
    enum class Kind {
        /// Replaces the status; nothing is stored.
        Status,
        /// Delays the answer.
        Delay,
        /// Closes the connection without an answer; nothing is stored.
        Drop,
        /// Sends half of the answer, then closes the connection.
        Truncate,
        /// Sends bytes that are not HTTP, or, with a status, a body that is not JSON; nothing is stored.
        Garbage,
        /// Replaces the body; nothing is stored.
        Body,
    };

    /// Assigned by the FaultScript.
    std::int64_t id = 0;
    /// The name of an endpoint, or "*" for every endpoint.
    std::string endpoint;
    Kind kind = Kind::Status;
    std::optional<int> status;
    /// The delay of the answer, for every kind.
    double seconds = 0;
    /// Replaces the endpoint's body, or the kind's own body.
    std::optional<std::string> body;
    std::optional<std::string> contentType;
    /// The number of further requests that the fault applies to; `nullopt`: no limit.
    std::optional<std::int64_t> count;
    /// The number of requests that the fault was applied to.
    std::int64_t applied = 0;

    /// Reads a fault: "endpoint", "kind", and depending on the kind "status" (200 to 599), "seconds" (0 to 600), "body"
    /// (a string or any JSON value), "bytes" (the body in hexadecimal), "contentType", "count" (at least 1). Throws
    /// MalformedRequest.
    static Fault fromDictionary(const Dictionary& dictionary);
    Dictionary asDictionary() const;

    /// Whether the endpoint still processes the request.
    bool leavesEndpointAlone() const { return kind == Kind::Delay || kind == Kind::Truncate; }
    /// Applies the fault to the endpoint's answer, or to an empty answer if the endpoint was not called.
    void spoil(ServiceResponse& response) const;
};

}  // namespace vorlane::service
