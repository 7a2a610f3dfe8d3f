#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/NSURL.h"
#include "Public/VLExport.h"

namespace vorlane {

/// One name and value of a query.
struct NSURLQueryItem {
    std::string name;
    std::string value;
};

/// A relative reference under construction: a path and a query, resolved against a base URL.
class VORLANE_EXPORT NSURLComponents {
public:
    /// `setPath:` takes the path unencoded. RFC 3986's path characters ("/", "*", "(" …) stay as they are, every other
    /// byte is percent-encoded, "%" included.
    void setPath(const std::string& path);

    /// `setQueryItems:` takes names and values unencoded. RFC 3986's query characters stay, except "&", "=", "+", "#"
    /// and "%"; these and every other byte are percent-encoded. No items means no query at all.
    void setQueryItems(const std::vector<NSURLQueryItem>& items);

    /// `URLRelativeToURL:` resolves this reference by RFC 3986: a path with a leading "/" replaces the base's path, any
    /// other replaces its last segment; dot segments are removed. The path is never taken for a scheme or an authority.
    NSURL URLRelativeToURL(const NSURL& base) const;

private:
    std::string encodedPath_;
    std::optional<std::string> encodedQuery_;
};

}  // namespace vorlane
