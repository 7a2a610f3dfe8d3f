#pragma once

#include <optional>
#include <string>

#include "Platform/NSURLSession.h"
#include "Public/VLValue.h"

namespace vorlane {

/// One request that the scripted network received.
struct RecordedRequest {
    NSURLRequest request;
    bool answered = false;
    bool cancelled = false;

    /// The body as a string; empty without a body.
    std::string bodyText() const;
    /// The JSON value of the body, form-encoded ("payload=…") or plain; null without one.
    Value payload() const;
    /// The value of the header, or `nullopt` if it is not set.
    std::optional<std::string> header(const std::string& name) const;
};

}  // namespace vorlane
