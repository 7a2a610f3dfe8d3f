#include "Inbox/VLInboxIds.h"

#include <random>

namespace vorlane {

namespace {

std::uint64_t seed() {
    static const std::uint64_t seed = [] {
        std::random_device device;
        return std::uint64_t{device()} << 32U | device();
    }();
    return seed;
}

}  // namespace

std::size_t VLInboxIdHash::operator()(std::uint64_t notificationId) const {
    // The finalizer of SplitMix64: every bit of the input changes about half of the bits of the result.
    std::uint64_t mixed = notificationId ^ seed();
    mixed = (mixed ^ mixed >> 30U) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ mixed >> 27U) * 0x94D049BB133111EBU;
    return static_cast<std::size_t>(mixed ^ mixed >> 31U);
}

}  // namespace vorlane
