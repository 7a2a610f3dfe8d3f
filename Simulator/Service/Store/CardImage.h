#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// The card image of a message.
struct CardImage {
    /// The last part of its path; equal for equal bytes.
    std::string name;
    std::string contentType;
    std::string bytes;

    /// Makes an image of bytes that start like a PNG or a JPEG. The rest is not checked, so that a test can serve a
    /// damaged image. Throws MalformedRequest.
    static CardImage fromBytes(std::string bytes);
};

}  // namespace vorlane::service
