#pragma once

#include <locale.h>

#include <string>

namespace vorlane {

/// A locale that writes numbers with a decimal comma, in force on this thread while the object lives. Made from
/// scratch, because a test machine may have none.
class CommaLocale {
public:
    /// Puts the locale's files into `folder`.
    explicit CommaLocale(const std::string& folder);
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    /// That of this thread's locale.
    static std::string decimalPoint();

private:
    locale_t locale_ = nullptr;
    locale_t previous_ = nullptr;
};

}  // namespace vorlane
