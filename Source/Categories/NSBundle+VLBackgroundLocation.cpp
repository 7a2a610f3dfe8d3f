#include "Categories/NSBundle+VLBackgroundLocation.h"

#include <algorithm>

#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/NSBundle.h"

namespace vorlane {

bool vl_isBackgroundLocationEnabledForApp(const NSBundle& bundle) {
    const auto* modes = arrayForKey(bundle.infoDictionary(), "UIBackgroundModes");
    return modes && std::ranges::find(*modes, Value("location")) != modes->end();
}

}  // namespace vorlane
