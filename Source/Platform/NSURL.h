#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Public/VLExport.h"

namespace vorlane {

/// An absolute URL. An immutable value; equal when the texts are equal.
class VORLANE_EXPORT NSURL {
public:
    /// `URLWithString:` reads an absolute URL of any scheme; nothing when the text is not one.
    static std::optional<NSURL> URLWithString(const std::string& text);

    /// The URL as text, as it was given.
    const std::string& absoluteString() const { return absoluteString_; }

    /// As written, not lower-cased.
    std::string scheme() const;
    /// Nothing for a URL without an authority part. Case is kept.
    std::optional<std::string> host() const;
    std::optional<std::int64_t> port() const;
    /// Percent-encoded, as it stands in the URL.
    std::string path() const;
    /// Percent-encoded, without the "?"; nothing when there is no "?".
    std::optional<std::string> query() const;

    /// The URL itself.
    std::string description() const { return absoluteString_; }

    bool operator==(const NSURL&) const = default;

private:
    explicit NSURL(std::string absoluteString) : absoluteString_(std::move(absoluteString)) {}
    friend class NSURLComponents;

    std::string absoluteString_;
};

}  // namespace vorlane
