#pragma once

namespace vorlane {

/// A colour with opacity. Each component is between 0 and 1.
struct UIColor {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 1;

    bool operator==(const UIColor&) const = default;
};

}  // namespace vorlane
