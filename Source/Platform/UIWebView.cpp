#include "Platform/UIWebView.h"

namespace vorlane {

UIWebView::~UIWebView() = default;

}  // namespace vorlane
