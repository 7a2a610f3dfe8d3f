#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorlane {

/// The kinds of notification that a user may allow, as bits.
inline constexpr std::uint64_t UIUserNotificationTypeBadge = 1;
inline constexpr std::uint64_t UIUserNotificationTypeSound = 2;
inline constexpr std::uint64_t UIUserNotificationTypeAlert = 4;

/// A group of notifications with the same actions. Actions are not supported.
struct UIUserNotificationCategory {
    std::string identifier;

    bool operator==(const UIUserNotificationCategory&) const = default;
};

/// What the user allows on platforms below 10.
struct UIUserNotificationSettings {
    /// A set of bits; 0 if nothing is allowed or the user was never asked.
    std::uint64_t types = 0;
    std::vector<UIUserNotificationCategory> categories = {};

    bool operator==(const UIUserNotificationSettings&) const = default;
};

}  // namespace vorlane
