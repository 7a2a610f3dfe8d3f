#include "Platform/PropertyList/PlainNumbers.h"

namespace vorlane {

namespace {

/// Made once and kept: the C library has this locale built in.
locale_t plainLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

}  // namespace

PlainNumbers::PlainNumbers() : previous_(uselocale(plainLocale())) {}

PlainNumbers::~PlainNumbers() { uselocale(previous_); }

}  // namespace vorlane
