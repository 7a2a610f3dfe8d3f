#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/Store/CardImage.h"

namespace vorlane::service {

/// A message as the operator sends it. A plain value.
struct MailboxMessage {
    /// Nothing lets the store choose one that was never used.
    std::optional<std::uint64_t> id;
    std::string appKey;
    std::string subject;
    /// As the app is to show it.
    std::string html;
    std::optional<std::string> label;
    std::optional<std::string> link;
    /// Nothing makes one of the id.
    std::optional<std::string> phash;
    std::optional<std::string> backgroundColor;
    std::optional<std::string> foregroundColor;
    /// Where the card's image is, when it is not one of the service's own.
    std::optional<std::string> cardUrl;
    /// An image that the service hands out itself; goes before the URL.
    std::optional<CardImage> image;
    std::optional<Dictionary> metadata;
    // Seconds since 1970.
    double created = 0;
    double end = 0;

    /// The message of an operator's request: "appKey" and "subject" (texts that are not empty), and
    /// where wanted "id" (0 to 18446744073709551615), "html", "label", "link", "phash", "backgroundColor",
    /// "foregroundColor", "cardUrl" (texts), "image" (the bytes of a PNG or JPEG in hexadecimal), "metadata" (an
    /// object), "created" and "end" (seconds since 1970; `now` and 30 days after "created" otherwise). Null is as good
    /// as absent. Throws MalformedRequest.
    static MailboxMessage fromPayload(const Dictionary& payload, double now);
};

}  // namespace vorlane::service
