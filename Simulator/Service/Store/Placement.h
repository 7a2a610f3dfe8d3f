#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// The content of a named placement in an app: a page and its metadata.
struct Placement {
    /// A name for which `isName()` returns true.
    std::string name;
    /// `nullopt` for a removed placement, which has no content.
    std::optional<std::string> html;
    /// Sent to the app with the page; has no key "html".
    Dictionary metadata;
    std::optional<std::string> phash;

    /// Whether an app can request a placement of this name: the 39 numbered placements and the five soft opt-ins.
    static bool isName(const std::string& name);

    /// Reads a placement: "html", and optionally "metadata" and "phash". Throws MalformedRequest.
    static Placement fromPayload(const std::string& name, const Dictionary& payload);

    /// Returns the object under "message" in the answer to an app. Only for a placement with a page.
    Dictionary message() const;
};

}  // namespace vorlane::service
