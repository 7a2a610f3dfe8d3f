#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/NSURLSession.h"
#include "Public/VLValue.h"

namespace vorlane {

/// What the scripted network answers to a request: an HTTP response, a response of another protocol, or an error.
struct ScriptedAnswer {
    std::int64_t status = 200;
    /// `nullopt`: a response without data.
    std::optional<Data> body = std::nullopt;
    /// False: the response is not an HTTP response.
    bool isHTTP = true;
    /// False: there is neither a response nor an error.
    bool hasResponse = true;
    /// The request fails with this code in `NSURLErrorDomain`.
    std::optional<NSURLError> failure = std::nullopt;

    /// An HTTP response; an empty string stands for a response without data.
    static ScriptedAnswer withBody(std::int64_t status, const std::string& body);
    /// An HTTP response with status 200 and a JSON document.
    static ScriptedAnswer withJSON(const Value& document);

    /// Calls a completion handler, which may be empty, as a session does for a request to `url`.
    void passTo(const NSURLSession::CompletionHandler& handler, const NSURL& url) const;
};

}  // namespace vorlane
