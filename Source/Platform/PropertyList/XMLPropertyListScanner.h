#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vorlane {

/// Makes an XML property list fit for libplist, from its tags alone and without recursion. libplist reads any depth,
/// but frees what it has read by recursion: what is too deep must never reach it. And it moves the rest of a text for
/// each entity in it, which takes hours for the longest: such a text must come in pieces.
class XMLPropertyListScanner {
public:
    /// What libplist is to read: the same list, with an empty CDATA section wherever one piece of a text ends and the
    /// next begins. Nothing when arrays and dictionaries nest deeper than `limit`, or the tags cannot be told apart.
    static std::optional<std::string> readable(std::string_view xml, int limit);

private:
    explicit XMLPropertyListScanner(std::string_view xml) : xml_(xml) {}

    bool scan(int limit);
    void takeText(std::size_t end);
    std::size_t endOfPiece(std::size_t end) const;
    bool skipMarkup(std::size_t open);
    bool skipTag(std::size_t open);
    bool moveBehind(std::size_t found, std::size_t length);
    std::size_t findEnd(std::size_t from) const;

    const std::string_view xml_;
    std::size_t position_ = 0;
    int depth_ = 0;
    std::string readable_;
};

}  // namespace vorlane
