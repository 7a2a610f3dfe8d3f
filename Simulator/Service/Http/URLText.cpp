#include "Simulator/Service/Http/URLText.h"

#include <algorithm>
#include <utility>

namespace vorlane::service {
namespace {

/// Returns -1 for a character that is not a hexadecimal digit.
int digitValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

std::string formDecoded(std::string_view text) {
    std::string withBlanks(text);
    std::replace(withBlanks.begin(), withBlanks.end(), '+', ' ');
    return percentDecoded(withBlanks);
}

/// Removes and returns everything up to the next separator, or everything without one.
std::string_view takeUntil(std::string_view& text, char separator) {
    const auto end = std::min(text.find(separator), text.size());
    const auto part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

}  // namespace

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isComplete = text[i] == '%' && i + 2 < text.size();
        const int high = isComplete ? digitValue(text[i + 1]) : -1;
        const int low = isComplete ? digitValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            decoded += text[i];
        } else {
            decoded += static_cast<char>(high * 16 + low);
            i += 2;
        }
    }
    return decoded;
}

std::map<std::string, std::string> formFields(std::string_view text) {
    std::map<std::string, std::string> fields;
    while (!text.empty()) {
        auto value = takeUntil(text, '&');
        if (value.empty()) continue;
        const auto name = takeUntil(value, '=');
        fields.emplace(formDecoded(name), formDecoded(value));
    }
    return fields;
}

std::vector<std::string> pathSegments(std::string_view path) {
    if (path.starts_with('/')) path.remove_prefix(1);
    std::vector<std::string> segments;
    for (std::size_t begin = 0; begin <= path.size();) {
        const auto end = std::min(path.find('/', begin), path.size());
        segments.push_back(percentDecoded(path.substr(begin, end - begin)));
        begin = end + 1;
    }
    return segments;
}

}  // namespace vorlane::service
