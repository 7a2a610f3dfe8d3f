#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A message's image as the service hands it out. A plain value.
struct CardImage {
    /// The last part of its path: the same for the same bytes.
    std::string name;
    std::string contentType;
    std::string bytes;

    /// The image of these bytes, whose beginning has to be that of a PNG or a JPEG; the rest is not looked at, so that
    /// a damaged image can be handed out, too. Throws MalformedRequest.
    static CardImage fromBytes(std::string bytes);
};

}  // namespace vorlane::service
