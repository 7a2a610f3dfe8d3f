#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/Internal/DocumentLimits.h"
#include "Public/VLValue.h"

namespace vorlane {

/// Writes property lists as XML, in one pass: the time grows with the length of the text, whatever the keys are.
class PropertyListWriter {
public:
    /// Returns no bytes for a root that a property list cannot hold, or with more values than DocumentLimits allows.
    /// Left out are null, numbers that are not finite, and arrays and dictionaries nested deeper than `limit`.
    static Data write(const Value& root, int limit = DocumentLimits::kDeepestNesting);
    static Data write(const Dictionary& root, int limit = DocumentLimits::kDeepestNesting);
    static Data write(const Array& root, int limit = DocumentLimits::kDeepestNesting);

private:
    explicit PropertyListWriter(int limit) : limit_(limit) {}

    template <class Root>
    Data documentOf(const Root& root);
    bool isHeld(const Value& value) const;
    void append(const Value& value);
    void append(const Dictionary& dictionary);
    void append(const Array& array);
    void appendLine(std::string_view line);
    void appendElement(std::string_view name, std::string_view text);
    void appendText(std::string_view text);
    void appendSpecial(char character);

    const int limit_;
    int depth_ = 0;
    std::size_t valueCount_ = 0;
    std::string xml_;
};

}  // namespace vorlane
