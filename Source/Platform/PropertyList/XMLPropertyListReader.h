#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

/// Reads XML property lists, in one pass and without recursion: the time grows with the length of the text, whatever
/// the keys are.
///
/// Strict where a lenient reading would take a damaged list for a sound one: numbers, dates, data, booleans, the order
/// of keys and values, entities. Strings are repaired: U+FFFD replaces every byte that is not UTF-8.
class XMLPropertyListReader {
public:
    /// Returns the root; `nullopt` if the text is no XML property list, or beyond the bounds of DocumentLimits, or
    /// its root is a number that is not finite. Such a number is left out of the array or dictionary that it stands in.
    static std::optional<Value> read(std::string_view xml);

private:
    /// An array or dictionary whose end has not been read yet.
    struct Container {
        Value value;
        std::optional<std::string> key;
    };

    struct Tag {
        std::string_view name;
        bool isClosing = false;
        bool isEmpty = false;
    };

    explicit XMLPropertyListReader(std::string_view xml) : rest_(xml) {}

    std::optional<Value> readDocument();
    bool readElement();
    bool open(const Tag& tag);
    bool close(std::string_view name);
    bool add(std::optional<Value> value);
    bool addLeaf(std::string_view name, std::string text);

    bool skipBlanks();
    bool skipMarkup();
    std::optional<Tag> readTag();
    std::optional<std::string> readText(std::string_view name);
    bool appendText(std::string_view text, std::string& result) const;

    std::string_view rest_;
    std::vector<Container> open_;
    std::size_t valueCount_ = 0;
    bool hasRoot_ = false;
    std::optional<Value> root_;
};

}  // namespace vorlane
