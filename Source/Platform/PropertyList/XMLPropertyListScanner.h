#pragma once

#include <cstddef>
#include <string_view>

namespace vorlane {

/// Tells how deep an XML property list is nested, from its tags alone and without recursion. libplist reads any depth,
/// but frees what it has read by recursion: what is too deep must never reach it.
class XMLPropertyListScanner {
public:
    /// Whether arrays and dictionaries nest no deeper than `limit`. False as well for a text whose tags cannot be told
    /// apart.
    static bool nestsWithin(std::string_view xml, int limit);

private:
    explicit XMLPropertyListScanner(std::string_view xml) : xml_(xml) {}

    bool scan(int limit);
    bool skipMarkup(std::size_t open);
    bool skipTag(std::size_t open);
    bool moveBehind(std::size_t found, std::size_t length);
    std::size_t findEnd(std::size_t from) const;

    const std::string_view xml_;
    std::size_t position_ = 0;
    int depth_ = 0;
};

}  // namespace vorlane
