#include "Inbox/JPEGHeader.h"

#include <algorithm>
#include <cmath>

namespace vorlane {

namespace {

// Markers, as the standard names them.
constexpr unsigned kDHT = 0xC4;
constexpr unsigned kJPG = 0xC8;
constexpr unsigned kDAC = 0xCC;
constexpr unsigned kFirstSOF = 0xC0;
constexpr unsigned kLastSOF = 0xCF;
constexpr unsigned kSOI = 0xD8;
constexpr unsigned kSOS = 0xDA;
constexpr unsigned kTEM = 0x01;
constexpr unsigned kFirstRST = 0xD0;
/// The largest multiple of samples that decoders pad each direction to.
constexpr std::uint64_t kMostBlock = 32;

/// A segment: its marker, and the range of its bytes after the length.
struct Segment {
    unsigned marker = 0;
    std::size_t start = 0;
    std::size_t end = 0;
};

bool isFrame(unsigned marker) {
    return marker >= kFirstSOF && marker <= kLastSOF && marker != kDHT && marker != kJPG && marker != kDAC;
}

/// Every fourth kind of frame is progressive.
bool isProgressive(unsigned frame) { return (frame & 3U) == 2; }

bool hasNoBytes(unsigned marker) { return marker == kTEM || (marker >= kFirstRST && marker <= kSOI); }

unsigned number(const Data& data, std::size_t place) { return data[place] * 256U + data[place + 1]; }

/// Returns the first segment from `place` on.
std::optional<Segment> segmentAt(const Data& data, std::size_t place) {
    constexpr unsigned kPrefix = 0xFF;
    while (place + 1 < data.size()) {
        const unsigned marker = data[place + 1];
        // Bytes between segments are skipped, as decoders do, and so are fill bytes.
        if (data[place] != kPrefix || marker == kPrefix || marker == 0) {
            ++place;
            continue;
        }
        place += 2;
        if (hasNoBytes(marker)) continue;
        if (place + 1 >= data.size()) break;
        const std::size_t end = place + number(data, place);
        if (end < place + 2 || end > data.size()) break;
        return Segment{marker, place + 2, end};
    }
    return std::nullopt;
}

/// Reads the frame header: precision, height, width, and three bytes for each component.
bool readFrame(const Data& data, const Segment& segment, JPEGHeader& header, unsigned& components) {
    constexpr std::size_t kFixedLength = 6;
    if (segment.end - segment.start < kFixedLength) return false;
    header.height = number(data, segment.start + 1);
    header.width = number(data, segment.start + 3);
    components = data[segment.start + 5];
    if (components == 0 || segment.end - segment.start < kFixedLength + 3 * std::size_t{components}) return false;
    unsigned sum = 0;
    unsigned widest = 1;
    unsigned highest = 1;
    for (unsigned i = 0; i < components; ++i) {
        const unsigned factors = data[segment.start + kFixedLength + 3 * std::size_t{i} + 1];
        sum += (factors >> 4U) * (factors & 0xFU);
        widest = std::max(widest, factors >> 4U);
        highest = std::max(highest, factors & 0xFU);
    }
    header.samplesPerPixel = static_cast<double>(sum) / (widest * highest);
    header.hasSeveralScans = isProgressive(segment.marker);
    return true;
}

}  // namespace

std::optional<JPEGHeader> JPEGHeader::headerWithData(const Data& data) {
    JPEGHeader header;
    unsigned components = 0;
    std::size_t place = 0;
    while (const auto segment = segmentAt(data, place)) {
        if (isFrame(segment->marker) && !readFrame(data, *segment, header, components)) break;
        if (segment->marker == kSOS) {
            if (components == 0 || segment->start == segment->end) break;
            header.hasSeveralScans = header.hasSeveralScans || data[segment->start] < components;
            return header;
        }
        place = segment->end;
    }
    return std::nullopt;
}

std::uint64_t JPEGHeader::coefficientBytes() const {
    constexpr double kBytesOfCoefficient = 2;
    if (!hasSeveralScans) return 0;
    const auto padded = [](std::uint64_t length) { return (length + kMostBlock - 1) / kMostBlock * kMostBlock; };
    const auto pixels = static_cast<double>(padded(width) * padded(height));
    return static_cast<std::uint64_t>(std::ceil(pixels * samplesPerPixel * kBytesOfCoefficient));
}

}  // namespace vorlane
