#pragma once

namespace vorlane {

class NSBundle;

/// Returns whether the bundle's "UIBackgroundModes" contain "location".
bool vl_isBackgroundLocationEnabledForApp(const NSBundle& bundle);

}  // namespace vorlane
