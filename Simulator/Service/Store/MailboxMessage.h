#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/Store/CardImage.h"

namespace vorlane::service {

/// A message as the operator sends it.
struct MailboxMessage {
    /// `nullopt`: the store chooses an id that was never used.
    std::optional<std::uint64_t> id;
    std::string appKey;
    std::string subject;
    /// The HTML that the app shows.
    std::string html;
    std::optional<std::string> label;
    std::optional<std::string> link;
    /// `nullopt`: derived from the id.
    std::optional<std::string> phash;
    std::optional<std::string> backgroundColor;
    std::optional<std::string> foregroundColor;
    /// The URL of the card's image, unless the service serves the image itself.
    std::optional<std::string> cardUrl;
    /// An image that the service serves itself; takes precedence over the URL.
    std::optional<CardImage> image;
    std::optional<Dictionary> metadata;
    // Seconds since 1970.
    double created = 0;
    double end = 0;

    /// Reads a message: "appKey" and "subject" (strings, not empty), and optionally "id" (0 to 18446744073709551615),
    /// "html", "label", "link", "phash", "backgroundColor", "foregroundColor", "cardUrl" (strings), "image" (the bytes
    /// of a PNG or JPEG in hexadecimal), "metadata" (an object), "created" and "end" (seconds since 1970; by default
    /// `now`, and 30 days after "created"). Null counts as absent. Throws MalformedRequest.
    static MailboxMessage fromPayload(const Dictionary& payload, double now);
};

}  // namespace vorlane::service
