#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "Public/VLValue.h"

namespace vorlane {

/// What the markers before the first scan of a JPEG file contain.
struct JPEGHeader {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    /// Samples of all components for each pixel of the largest component, 1 to 40.
    double samplesPerPixel = 0;
    /// The image is progressive, or its components follow one another. Decoders then keep all coefficients in memory.
    bool hasSeveralScans = false;

    /// Returns `nullopt` if there is no frame or no scan.
    static std::optional<JPEGHeader> headerWithData(const Data& data);

    /// Returns the bytes of memory that the coefficients of the whole image take in the decoder; 0 for a single scan.
    std::uint64_t coefficientBytes() const;
};

}  // namespace vorlane
