#include "Tests/Platform/CommaLocale.h"

#include <gtest/gtest.h>
#include <langinfo.h>
#include <stdlib.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

namespace vorlane {

namespace {

void append(std::string& text, std::uint32_t number) {
    text.append(reinterpret_cast<const char*>(&number), sizeof number);
}

/// The C library's compiled form of the numbers' part of a locale: a magic number, where each field stands, the fields.
std::string compiledNumbers() {
    constexpr std::uint32_t kMagic = 0x20031115U ^ LC_NUMERIC;
    constexpr std::uint32_t kWideComma = ',';
    std::string comma(",\0", 2);
    std::string wideComma;
    append(wideComma, kWideComma);
    const std::string none(4, '\0');
    // Decimal point, thousands separator, grouping; the first two as wide characters; the character set.
    const std::vector<std::string> fields = {comma, none, none, wideComma, none, std::string("UTF-8\0", 6)};
    std::string index;
    append(index, kMagic);
    append(index, static_cast<std::uint32_t>(fields.size()));
    const auto start = index.size() + fields.size() * sizeof(std::uint32_t);
    std::string contents;
    for (const auto& field : fields) {
        contents.resize((contents.size() + 3) / 4 * 4);
        append(index, static_cast<std::uint32_t>(start + contents.size()));
        contents += field;
    }
    return index + contents;
}

}  // namespace

CommaLocale::CommaLocale(const std::string& folder) {
    std::filesystem::create_directories(folder + "/comma");
    std::ofstream(folder + "/comma/LC_NUMERIC", std::ios::binary) << compiledNumbers();
#ifdef __SANITIZE_ADDRESS__
    // The C library never frees the path that it searches for locales.
    const __lsan::ScopedDisabler noLeaks;
#endif
    setenv("LOCPATH", folder.c_str(), 1);
    locale_ = newlocale(LC_NUMERIC_MASK, "comma", nullptr);
    unsetenv("LOCPATH");
    if (!locale_) ADD_FAILURE() << "no locale";
    previous_ = uselocale(locale_);
}

CommaLocale::~CommaLocale() {
    uselocale(previous_);
    if (locale_) freelocale(locale_);
}

std::string CommaLocale::decimalPoint() { return nl_langinfo(RADIXCHAR); }

}  // namespace vorlane
