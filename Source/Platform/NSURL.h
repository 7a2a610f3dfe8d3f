#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Public/VLExport.h"

namespace vorlane {

/// An absolute URL. An immutable value; URLs are equal if their strings are.
class VORLANE_EXPORT NSURL {
public:
    /// `URLWithString:` parses an absolute URL of any scheme. Returns `nullopt` if the string is not a valid one.
    static std::optional<NSURL> URLWithString(const std::string& text);

    /// The string that the URL was made from.
    const std::string& absoluteString() const { return absoluteString_; }

    /// The scheme in its original case.
    std::string scheme() const;
    /// The host in its original case; `nullopt` for a URL without an authority part.
    std::optional<std::string> host() const;
    std::optional<std::int64_t> port() const;
    /// The path, still percent-encoded.
    std::string path() const;
    /// The query without its "?", still percent-encoded; `nullopt` if there is no "?".
    std::optional<std::string> query() const;

    /// Returns the URL's string.
    std::string description() const { return absoluteString_; }

    bool operator==(const NSURL&) const = default;

private:
    explicit NSURL(std::string absoluteString) : absoluteString_(std::move(absoluteString)) {}
    friend class NSURLComponents;

    std::string absoluteString_;
};

}  // namespace vorlane
