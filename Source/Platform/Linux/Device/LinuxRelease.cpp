#include "Platform/Linux/Device/LinuxRelease.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace vorlane {

namespace {

bool isFieldName(const std::string& name) {
    return !name.empty() && std::ranges::all_of(name, [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
}

/// Removes a word's quotes as a shell does.
std::string unquoted(const std::string& word) {
    std::string text;
    char quote = '\0';
    for (std::size_t i = 0; i < word.size(); ++i) {
        const char c = word[i];
        if (c == '\\' && quote != '\'' && i + 1 < word.size()) {
            text += word[++i];
        } else if (quote == '\0' ? (c == '"' || c == '\'') : c == quote) {
            quote = quote == '\0' ? c : '\0';
        } else {
            text += c;
        }
    }
    return text;
}

std::string trimmed(const std::string& line) {
    constexpr const char* kBlanks = " \t\r";
    const auto first = line.find_first_not_of(kBlanks);
    return first == std::string::npos ? std::string() : line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::map<std::string, std::string> fieldsOfRelease(const std::string& text) {
    std::map<std::string, std::string> fields;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        line = trimmed(line);
        const auto equals = line.find('=');
        if (equals == std::string::npos || !isFieldName(line.substr(0, equals))) continue;
        fields[line.substr(0, equals)] = unquoted(line.substr(equals + 1));
    }
    return fields;
}

}  // namespace vorlane
