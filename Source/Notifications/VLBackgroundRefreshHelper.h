#pragma once

#include <cstdint>
#include <memory>

namespace vorlane {

class UIApplication;

/// Reads whether the application may be refreshed in the background, as a notification setting. Main queue only.
class VLBackgroundRefreshHelper {
public:
    /// `initWithApplication:`
    explicit VLBackgroundRefreshHelper(std::weak_ptr<UIApplication> application);

    /// The application's status when it is 0 (restricted: not supported), 1 (denied: disabled) or 2 (available:
    /// enabled); -1 (unknown) for any other, and without an application.
    std::int64_t getUIKitBackgroundRefreshSetting() const;

private:
    // Fixed at construction.
    const std::weak_ptr<UIApplication> application_;
};

}  // namespace vorlane
