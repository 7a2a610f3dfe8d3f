#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/NSURL.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A name and a value in a query.
struct NSURLQueryItem {
    std::string name;
    std::string value;
};

/// A relative reference under construction: a path and a query, resolved against a base URL.
class VORLANE_EXPORT NSURLComponents {
public:
    /// `setPath:` sets a path that is not encoded. Path characters of RFC 3986 ("/", "*", "(" …) are kept; every other
    /// byte, "%" included, is percent-encoded.
    void setPath(const std::string& path);

    /// `setQueryItems:` sets names and values that are not encoded. Query characters of RFC 3986 except "&", "=", "+",
    /// "#" and "%" are kept; every other byte is percent-encoded. Without items there is no query.
    void setQueryItems(const std::vector<NSURLQueryItem>& items);

    /// `URLRelativeToURL:` resolves this reference by RFC 3986: a path with a leading "/" replaces the base's path, any
    /// other path replaces its last segment, and dot segments are removed. The path is never read as a scheme or an
    /// authority.
    NSURL URLRelativeToURL(const NSURL& base) const;

private:
    std::string encodedPath_;
    std::optional<std::string> encodedQuery_;
};

}  // namespace vorlane
