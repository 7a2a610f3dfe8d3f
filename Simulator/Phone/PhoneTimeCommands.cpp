// Commands that advance the clock and wait.

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

constexpr double kSettleTimeout = 10.0;

Value advance(Phone& phone, const Dictionary& line) {
    if (!phone.options().virtualClock) throw BadLine("advance needs --clock virtual");
    const auto seconds = numberFrom(requiredField(line, "seconds"), "seconds");
    if (!(seconds >= 0)) throw BadLine("seconds must not be negative");
    phone.device().advance(seconds);
    return nullptr;
}

Value settle(Phone& phone, const Dictionary& line) {
    const auto* timeout = valueForKey(line, "timeout");
    const double seconds = timeout ? numberFrom(*timeout, "timeout") : kSettleTimeout;
    if (!(seconds >= 0)) throw BadLine("timeout must not be negative");
    if (!phone.device().settle(seconds)) throw BadLine("not settled in time");
    return nullptr;
}

}  // namespace

Phone::Commands timeCommands() { return {{"advance", advance}, {"settle", settle}}; }

}  // namespace vorlane::phone
