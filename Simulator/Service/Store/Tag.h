#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A named value of a user's. A plain value.
struct Tag {
    std::string name;
    /// "string", "numeric" or "timestamp".
    std::string type;
    /// Nothing removes the tag.
    std::optional<std::string> value;

    /// The tag that an app sent: "name", "value" (text, number, boolean or null) and "type". Without a type, a number
    /// is numeric, anything else a string. Throws MalformedRequest.
    static Tag fromPayload(const Dictionary& payload);

    /// What an app reads: a string's text; a numeric or timestamp as a number, or as its text when it reads as no
    /// number; null without a value.
    Value readValue() const;
};

}  // namespace vorlane::service
