#pragma once

namespace vorlane {

class NSBundle;

/// Whether the bundle's "UIBackgroundModes" contain "location".
bool vl_isBackgroundLocationEnabledForApp(const NSBundle& bundle);

}  // namespace vorlane
