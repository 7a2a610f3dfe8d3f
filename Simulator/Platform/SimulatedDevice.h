#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/UIDevice.h"

namespace vorlane {

/// The simulated phone's device: fixed values that a test may change. Any thread.
class SimulatedDevice : public UIDevice {
public:
    explicit SimulatedDevice(std::string systemVersion);

    std::string systemName() const override;
    std::string systemVersion() const override;
    std::string machine() const override;
    std::vector<std::string> preferredLanguages() const override;
    /// The process's time zone (`TZ`), with its offset at the platform's time, until a test sets another one.
    NSTimeZone localTimeZone() const override;

    void setPreferredLanguages(std::vector<std::string> languages);
    void setLocalTimeZone(NSTimeZone zone);

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::string systemVersion_;
    std::vector<std::string> preferredLanguages_ = {"en-GB"};
    std::optional<NSTimeZone> localTimeZone_;
};

}  // namespace vorlane
