#include "Platform/Linux/Device/LinuxLocale.h"

#include <algorithm>
#include <string_view>

#include "Platform/Internal/ASCIICase.h"

namespace vorlane {

namespace {

// ASCII only, whatever locale the application has set.
bool isLetter(char c) { return inLowercase(c) >= 'a' && inLowercase(c) <= 'z'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isPlainLocale(std::string_view name) { return name == "C" || name == "POSIX"; }

/// Removes and returns the part of `text` before the first of the characters in `ends`.
std::string takeUntil(std::string_view& text, std::string_view ends) {
    const auto end = std::min(text.find_first_of(ends), text.size());
    std::string taken(text.substr(0, end));
    text.remove_prefix(end);
    return taken;
}

bool isLanguage(const std::string& text) {
    return text.size() >= 2 && text.size() <= 8 && std::ranges::all_of(text, isLetter);
}

bool isRegion(const std::string& text) {
    return (text.size() == 2 && std::ranges::all_of(text, isLetter)) ||
           (text.size() == 3 && std::ranges::all_of(text, isDigit));
}

/// The script of a locale's modifier; empty if the modifier is no script ("euro").
std::string scriptOfModifier(const std::string& modifier) {
    if (modifier == "latin") return "Latn";
    if (modifier == "cyrillic") return "Cyrl";
    if (modifier == "devanagari") return "Deva";
    return {};
}

bool isZoneName(std::string_view text) {
    const auto belongs = [](char c) {
        return isLetter(c) || isDigit(c) || c == '_' || c == '-' || c == '+' || c == '/';
    };
    if (text.empty() || !isLetter(text.front()) || !std::ranges::all_of(text, belongs)) return false;
    // Without a slash, digits or signs mean a rule.
    return text.find('/') != std::string_view::npos || std::ranges::all_of(text, isLetter);
}

std::string zoneNameOfPath(std::string_view path) {
    constexpr std::string_view kDatabase = "/zoneinfo/";
    const auto start = path.find(kDatabase);
    if (start == std::string_view::npos) return {};
    path.remove_prefix(start + kDatabase.size());
    for (const std::string_view variant : {"posix/", "right/"}) {
        if (path.starts_with(variant)) path.remove_prefix(variant.size());
    }
    return std::string(path);
}

}  // namespace

std::optional<std::string> languageTagOfLocale(const std::string& locale) {
    std::string_view rest = locale;
    const std::string language = takeUntil(rest, "_.@");
    if (isPlainLocale(language)) return "en";
    if (!isLanguage(language)) return std::nullopt;

    std::string region;
    if (rest.starts_with('_')) {
        rest.remove_prefix(1);
        region = takeUntil(rest, ".@");
    }
    takeUntil(rest, "@");
    const std::string script = rest.empty() ? std::string() : scriptOfModifier(lowercased(std::string(rest.substr(1))));

    std::string tag = lowercased(language);
    if (!script.empty()) tag += "-" + script;
    if (isRegion(region)) tag += "-" + capitalised(region);
    return tag;
}

std::vector<std::string> preferredLanguageTags(const EnvironmentLookup& lookup) {
    std::vector<std::string> tags;
    const auto add = [&tags](const std::string& locale) {
        const auto tag = languageTagOfLocale(locale);
        if (tag && std::ranges::find(tags, *tag) == tags.end()) tags.push_back(*tag);
    };

    std::optional<std::string> locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (!locale) locale = lookup(name);
    }
    if (!locale || !isPlainLocale(*locale)) {
        const std::string languages = lookup("LANGUAGE").value_or("");
        for (std::string_view rest = languages; !rest.empty(); rest.remove_prefix(rest.empty() ? 0 : 1)) {
            add(takeUntil(rest, ":"));
        }
    }
    if (locale) add(*locale);
    if (tags.empty()) tags.emplace_back("en");
    return tags;
}

std::string timeZoneName(const std::optional<std::string>& tz, const std::string& localtimeTarget) {
    if (!tz || tz->empty()) return zoneNameOfPath(localtimeTarget);
    std::string_view zone = *tz;
    if (zone.starts_with(':')) zone.remove_prefix(1);
    if (zone.starts_with('/')) return zoneNameOfPath(zone);
    return isZoneName(zone) ? std::string(zone) : std::string();
}

}  // namespace vorlane
