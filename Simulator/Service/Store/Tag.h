#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A named value of a user.
struct Tag {
    std::string name;
    /// "string", "numeric" or "timestamp".
    std::string type;
    /// `nullopt`: the tag is removed.
    std::optional<std::string> value;

    /// Reads a tag of an app: "name", "value" (a string, number, boolean or null) and "type". Without a type, a number
    /// is numeric and any other value a string. Throws MalformedRequest.
    static Tag fromPayload(const Dictionary& payload);

    /// Returns the value that an app reads: a string; for a numeric or timestamp tag a number, or its string if it is
    /// not a number; null without a value.
    Value readValue() const;
};

}  // namespace vorlane::service
