#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

/// Checks a binary property list without recursion before libplist reads it. Its objects refer to each other by number,
/// so a small file can be nested without end, or hold the same array a billion times; libplist follows every reference.
class BinaryPropertyListScanner {
public:
    /// Whether every object that the root leads to lies within the file, none contains itself, and the list is within
    /// the bounds of DocumentLimits, with a shared object counted each time.
    static bool isSound(const Data& bytes);

private:
    struct Object {
        std::size_t length = 0;
        // Where the references to its members stand; arrays and dictionaries only.
        std::size_t references = 0;
        std::size_t memberCount = 0;
        bool isContainer = false;
    };
    enum class Visit : std::uint8_t { None, UnderWay, Done };
    struct Summary {
        Visit visit = Visit::None;
        int depth = 0;
        std::uint64_t size = 0;
        std::uint64_t valueCount = 0;
    };
    struct Step {
        std::size_t number;
        Object object;
        std::size_t nextMember = 0;
    };

    explicit BinaryPropertyListScanner(const Data& bytes) : bytes_(bytes) {}

    bool readTrailer();
    bool walk();
    bool enter(std::size_t number);
    bool leave();
    std::optional<Object> objectAt(std::size_t number) const;
    std::optional<std::size_t> countAt(std::size_t& position) const;
    bool hasZero(std::size_t position, std::size_t count) const;
    std::uint64_t numberAt(std::size_t position, std::size_t width) const;

    const Data& bytes_;
    std::size_t offsetWidth_ = 0;
    std::size_t referenceWidth_ = 0;
    std::size_t root_ = 0;
    std::size_t tableStart_ = 0;
    std::uint64_t sizeVisited_ = 0;
    std::vector<Summary> summaries_;
    std::vector<Step> path_;
};

}  // namespace vorlane
