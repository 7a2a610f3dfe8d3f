#pragma once

#include <locale.h>

namespace vorlane {

/// While one lives, its thread writes and reads numbers with a decimal point, whatever locale the host has chosen.
class PlainNumbers {
public:
    PlainNumbers();
    ~PlainNumbers();
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

private:
    const locale_t previous_;
};

}  // namespace vorlane
