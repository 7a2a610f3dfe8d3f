#include "Notifications/VLBackgroundRefreshHelper.h"

#include <utility>

#include "Platform/UIApplication.h"

namespace vorlane {

VLBackgroundRefreshHelper::VLBackgroundRefreshHelper(std::weak_ptr<UIApplication> application)
    : application_(std::move(application)) {}

std::int64_t VLBackgroundRefreshHelper::getUIKitBackgroundRefreshSetting() const {
    constexpr std::int64_t kUnknown = -1;
    const auto application = application_.lock();
    if (!application) return kUnknown;
    switch (const auto status = application->backgroundRefreshStatus()) {
        case UIBackgroundRefreshStatus::Restricted:
        case UIBackgroundRefreshStatus::Denied:
        case UIBackgroundRefreshStatus::Available:
            return static_cast<std::int64_t>(status);
    }
    return kUnknown;
}

}  // namespace vorlane
