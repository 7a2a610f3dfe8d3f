#pragma once

#include <optional>
#include <string>

#include "Platform/NSURL.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A view that shows HTML pages, implemented by the application. Main queue only.
class VORLANE_EXPORT UIWebView {
public:
    virtual ~UIWebView();

    /// `loadHTMLString:baseURL:` shows the page. Without a base URL, relative links do not work.
    virtual void loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) = 0;
};

}  // namespace vorlane
