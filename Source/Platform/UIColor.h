#pragma once

namespace vorlane {

/// A colour with opacity; each part from 0 to 1. A value.
struct UIColor {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 1;

    bool operator==(const UIColor&) const = default;
};

}  // namespace vorlane
