#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/Http/ServiceResponse.h"

namespace vorlane::service {

/// Something that is to go wrong with an endpoint's answers. A plain value.
struct Fault {
    enum class Kind {
        /// Another status; nothing is stored.
        status,
        /// The answer is held back for a while.
        delay,
        /// The connection is closed without an answer; nothing is stored.
        drop,
        /// Half of the answer, then the connection is closed.
        truncate,
        /// Bytes that are no HTTP, or, with a status, a body that is no JSON; nothing is stored.
        garbage,
        /// Another body; nothing is stored.
        body,
    };

    /// Given by the script.
    std::int64_t id = 0;
    /// An operation's name, or "*" for all of them.
    std::string endpoint;
    Kind kind = Kind::status;
    std::optional<int> status;
    /// For how long the answer is held back, whatever the kind.
    double seconds = 0;
    /// In place of the endpoint's body, or of the kind's own.
    std::optional<std::string> body;
    std::optional<std::string> contentType;
    /// How many more requests it happens to; nothing for no end.
    std::optional<std::int64_t> count;
    /// How many requests it has happened to.
    std::int64_t applied = 0;

    /// A fault from its object: "endpoint", "kind", and as the kind needs them "status" (200 to 599), "seconds" (0 to
    /// 600), "body" (text, or any JSON), "bytes" (the body in hexadecimal), "contentType", "count" (from 1). Throws
    /// MalformedRequest.
    static Fault fromDictionary(const Dictionary& dictionary);
    Dictionary asDictionary() const;

    /// Whether the endpoint does its work though its answer is spoilt.
    bool leavesEndpointAlone() const { return kind == Kind::delay || kind == Kind::truncate; }
    /// Spoils the answer: the endpoint's, or an empty one where it was not asked.
    void spoil(ServiceResponse& response) const;
};

}  // namespace vorlane::service
