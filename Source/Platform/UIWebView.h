#pragma once

#include <optional>
#include <string>

#include "Platform/NSURL.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A view that shows a page: what an application's own view controller gives of it. Main queue only.
class VORLANE_EXPORT UIWebView {
public:
    virtual ~UIWebView();

    /// `loadHTMLString:baseURL:` shows the page. Without a base URL its relative links lead nowhere.
    virtual void loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) = 0;
};

}  // namespace vorlane
