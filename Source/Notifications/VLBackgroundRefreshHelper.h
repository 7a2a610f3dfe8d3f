#pragma once

#include <cstdint>
#include <memory>

namespace vorlane {

class UIApplication;

/// Reads the background-refresh status of the application as a notification setting. Main queue only.
class VLBackgroundRefreshHelper {
public:
    /// `initWithApplication:`
    explicit VLBackgroundRefreshHelper(std::weak_ptr<UIApplication> application);

    /// Returns 0 (not supported) for a restricted, 1 (disabled) for a denied and 2 (enabled) for an available
    /// background refresh; -1 (unknown) for any other status, and if the application is gone.
    std::int64_t getUIKitBackgroundRefreshSetting() const;

private:
    // Fixed at construction.
    const std::weak_ptr<UIApplication> application_;
};

}  // namespace vorlane
