#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// What a named place in an app shows: a page, and what goes with it. A plain value.
struct Placement {
    /// One of those for which `isName()`.
    std::string name;
    /// Nothing for a placement that was removed: it has no content.
    std::optional<std::string> html;
    /// Goes to the app beside the page; has no "html" of its own.
    Dictionary metadata;
    std::optional<std::string> phash;

    /// Whether apps ask for a placement of this name: the 39 of the library's numbers, and its five soft opt-ins.
    static bool isName(const std::string& name);

    /// The placement that an operator describes: "html", and as wished "metadata" and "phash". Throws MalformedRequest.
    static Placement fromPayload(const std::string& name, const Dictionary& payload);

    /// What an app receives as "message". Only for a placement that has a page.
    Dictionary message() const;
};

}  // namespace vorlane::service
