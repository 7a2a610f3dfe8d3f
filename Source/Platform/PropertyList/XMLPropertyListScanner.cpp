#include "Platform/PropertyList/XMLPropertyListScanner.h"

#include <algorithm>
#include <utility>

namespace vorlane {

namespace {

constexpr auto kNowhere = std::string_view::npos;
constexpr std::size_t kLongestPiece = 1024;
constexpr std::string_view kSeam = "<![CDATA[]]>";

bool isContainer(std::string_view name) { return name == "array" || name == "dict"; }

}  // namespace

std::optional<std::string> XMLPropertyListScanner::readable(std::string_view xml, int limit) {
    // libplist ends a tag's name at a NUL byte, which XML has no place for anyway.
    if (xml.find('\0') != kNowhere) return std::nullopt;
    XMLPropertyListScanner scanner(xml);
    if (!scanner.scan(limit)) return std::nullopt;
    return std::move(scanner.readable_);
}

bool XMLPropertyListScanner::scan(int limit) {
    readable_.reserve(xml_.size());
    for (auto open = xml_.find('<'); open != kNowhere; open = xml_.find('<', position_)) {
        takeText(open);
        const auto next = xml_.substr(open + 1, 1);
        const bool isRead = next == "!" || next == "?" ? skipMarkup(open) : skipTag(open);
        if (!isRead || depth_ < 0 || depth_ > limit) return false;
        readable_ += xml_.substr(open, position_ - open);
    }
    takeText(xml_.size());
    return true;
}

/// What stands between two tags, in pieces when it has entities.
void XMLPropertyListScanner::takeText(std::size_t end) {
    const bool hasEntities = xml_.substr(position_, end - position_).find('&') != kNowhere;
    while (hasEntities && end - position_ > kLongestPiece) {
        const auto piece = endOfPiece(end);
        readable_ += xml_.substr(position_, piece - position_);
        readable_ += kSeam;
        position_ = piece;
    }
    readable_ += xml_.substr(position_, end - position_);
    position_ = end;
}

/// Where a piece that begins here may end: not inside an entity.
std::size_t XMLPropertyListScanner::endOfPiece(std::size_t end) const {
    const auto piece = xml_.substr(position_, kLongestPiece);
    const auto entity = piece.rfind('&');
    if (entity == kNowhere || piece.find(';', entity) != kNowhere) return position_ + piece.size();
    const auto semicolon = xml_.find(';', position_ + entity);
    return semicolon < end ? semicolon + 1 : end;
}

/// Comments and the like, whose insides are no tags.
bool XMLPropertyListScanner::skipMarkup(std::size_t open) {
    const auto markup = xml_.substr(open);
    if (markup.starts_with("<!--")) return moveBehind(xml_.find("-->", open + 4), 3);
    if (markup.starts_with("<![CDATA[")) return moveBehind(xml_.find("]]>", open + 9), 3);
    const auto end = findEnd(open + 1);
    if (end == kNowhere) return false;
    const auto inside = xml_.substr(open + 1, end - open - 1);
    // Declarations of a document's own ("[") are no part of property lists.
    const bool isWhole = inside.starts_with('?') ? inside.ends_with('?') : inside.find('[') == kNowhere;
    return isWhole && moveBehind(end, 1);
}

bool XMLPropertyListScanner::skipTag(std::size_t open) {
    const auto end = findEnd(open + 1);
    if (end == kNowhere) return false;
    auto name = xml_.substr(open + 1, end - open - 1);
    const bool isEmpty = name.ends_with('/');
    name = name.substr(0, name.find_first_of(" \r\n\t"));
    if (name.starts_with('/')) {
        if (isContainer(name.substr(1))) --depth_;
    } else if (!isEmpty && isContainer(name)) {
        ++depth_;
    }
    return moveBehind(end, 1);
}

bool XMLPropertyListScanner::moveBehind(std::size_t found, std::size_t length) {
    position_ = found + length;
    return found != kNowhere;
}

/// Where the ">" of a tag stands. Nowhere when quotation marks or another "<" leave room for doubt about it: no
/// property list has these in its tags, and the scanner must not see a tag where libplist sees none.
std::size_t XMLPropertyListScanner::findEnd(std::size_t from) const {
    const auto end = xml_.find_first_of("<>", from);
    if (end == kNowhere || xml_[end] == '<') return kNowhere;
    const auto inside = xml_.substr(from, end - from);
    return std::count(inside.begin(), inside.end(), '"') % 2 == 0 ? end : kNowhere;
}

}  // namespace vorlane
