#include "Platform/PropertyList/BinaryPropertyListScanner.h"

#include <algorithm>
#include <string_view>

#include "Platform/Internal/DocumentLimits.h"

namespace vorlane {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerLength = 32;
/// The most that a list may amount to, in bytes of the file, and what each object costs besides its own bytes.
constexpr std::uint64_t kLargestSize = std::uint64_t{64} << 20U;
constexpr std::uint64_t kObjectCost = 32;

bool isWidth(std::size_t width) { return (width >= 1 && width <= 4) || width == 8; }

}  // namespace

bool BinaryPropertyListScanner::isSound(const Data& bytes) {
    BinaryPropertyListScanner scanner(bytes);
    return scanner.readTrailer() && scanner.walk();
}

bool BinaryPropertyListScanner::readTrailer() {
    if (bytes_.size() < kMagic.size() + kTrailerLength || !std::equal(kMagic.begin(), kMagic.end(), bytes_.begin())) {
        return false;
    }
    const auto trailer = bytes_.size() - kTrailerLength;
    offsetWidth_ = bytes_[trailer + 6];
    referenceWidth_ = bytes_[trailer + 7];
    const auto count = numberAt(trailer + 8, 8);
    const auto root = numberAt(trailer + 16, 8);
    const auto table = numberAt(trailer + 24, 8);
    if (!isWidth(offsetWidth_) || !isWidth(referenceWidth_) || table < kMagic.size() || table > trailer) return false;
    if (count > (trailer - table) / offsetWidth_ || root >= count) return false;
    root_ = static_cast<std::size_t>(root);
    tableStart_ = static_cast<std::size_t>(table);
    summaries_.resize(static_cast<std::size_t>(count));
    return true;
}

/// Visits every object once, members before what contains them.
bool BinaryPropertyListScanner::walk() {
    if (!enter(root_)) return false;
    while (!path_.empty()) {
        auto& step = path_.back();
        if (step.nextMember == step.object.memberCount) {
            if (!leave()) return false;
            continue;
        }
        const auto position = step.object.references + step.nextMember++ * referenceWidth_;
        const auto member = numberAt(position, referenceWidth_);
        if (member >= summaries_.size()) return false;
        const auto visit = summaries_[static_cast<std::size_t>(member)].visit;
        // One that is still under way contains itself.
        if (visit == Visit::UnderWay) return false;
        if (visit == Visit::None && !enter(static_cast<std::size_t>(member))) return false;
    }
    return true;
}

bool BinaryPropertyListScanner::enter(std::size_t number) {
    const auto object = objectAt(number);
    // A path may end with one object that is no container.
    if (!object || path_.size() > static_cast<std::size_t>(DocumentLimits::kDeepestNesting)) return false;
    // Objects may overlap, so their lengths can add up to more than the file's.
    sizeVisited_ += kObjectCost + object->length;
    if (sizeVisited_ > kLargestSize) return false;
    summaries_[number].visit = Visit::UnderWay;
    path_.push_back({number, *object});
    return true;
}

bool BinaryPropertyListScanner::leave() {
    const auto& [number, object, visited] = path_.back();
    auto& summary = summaries_[number];
    summary.size = kObjectCost + object.length;
    summary.valueCount = 1;
    for (std::size_t i = 0; i < visited; ++i) {
        const auto& member =
            summaries_[static_cast<std::size_t>(numberAt(object.references + i * referenceWidth_, referenceWidth_))];
        summary.depth = std::max(summary.depth, member.depth);
        summary.size += member.size;
        summary.valueCount += member.valueCount;
        // Keys are counted too.
        if (summary.size > kLargestSize || summary.valueCount > 2 * DocumentLimits::kMostValuesInPropertyList)
            return false;
    }
    if (object.isContainer) ++summary.depth;
    summary.visit = Visit::Done;
    path_.pop_back();
    return summary.depth <= DocumentLimits::kDeepestNesting;
}

std::optional<BinaryPropertyListScanner::Object> BinaryPropertyListScanner::objectAt(std::size_t number) const {
    const auto start = numberAt(tableStart_ + number * offsetWidth_, offsetWidth_);
    if (start < kMagic.size() || start >= tableStart_) return std::nullopt;
    auto position = static_cast<std::size_t>(start);
    const unsigned kind = bytes_[position] >> 4U;
    const unsigned low = bytes_[position] & 0xFU;
    const auto count = kind >= 0x4 && kind != 0x8 ? countAt(position) : std::optional<std::size_t>(++position);
    if (!count) return std::nullopt;
    Object object;
    switch (kind) {
        case 0x0:  // True, false and the like
            break;
        case 0x1:  // Integer
        case 0x2:  // Real
        case 0x3:  // Date
            if (low > 4) return std::nullopt;
            object.length = std::size_t{1} << low;
            break;
        case 0x4:  // Data
        case 0x5:  // ASCII text
            object.length = *count;
            break;
        case 0x6:  // UTF-16 text
            object.length = 2 * *count;
            if (hasZero(position, *count)) return std::nullopt;
            break;
        case 0x8:  // UID
            object.length = low + 1;
            break;
        case 0xA:  // Array
        case 0xC:  // Set
        case 0xD:  // Dictionary: the keys, then the values
            object.isContainer = true;
            object.references = position;
            object.memberCount = kind == 0xD ? 2 * *count : *count;
            object.length = object.memberCount * referenceWidth_;
            break;
        default:
            return std::nullopt;
    }
    if (object.length > tableStart_ - position) return std::nullopt;
    return object;
}

/// The count in an object's first byte, or in the integer behind it; moves to where the contents stand. Nothing when
/// there is no room for that many.
std::optional<std::size_t> BinaryPropertyListScanner::countAt(std::size_t& position) const {
    const std::size_t low = bytes_[position++] & 0xFU;
    if (low < 0xF) return low;
    if (position >= tableStart_ || bytes_[position] >> 4U != 0x1) return std::nullopt;
    const unsigned power = bytes_[position++] & 0xFU;
    if (power > 3 || (std::size_t{1} << power) > tableStart_ - position) return std::nullopt;
    const auto count = numberAt(position, std::size_t{1} << power);
    position += std::size_t{1} << power;
    if (count > bytes_.size()) return std::nullopt;
    return static_cast<std::size_t>(count);
}

/// Whether a UTF-16 text holds U+0000, at which libplist ends the process.
bool BinaryPropertyListScanner::hasZero(std::size_t position, std::size_t count) const {
    if (2 * count > tableStart_ - position) return true;
    for (std::size_t i = 0; i < count; ++i) {
        if (numberAt(position + 2 * i, 2) == 0) return true;
    }
    return false;
}

std::uint64_t BinaryPropertyListScanner::numberAt(std::size_t position, std::size_t width) const {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < width; ++i) number = (number << 8U) | bytes_[position + i];
    return number;
}

}  // namespace vorlane
