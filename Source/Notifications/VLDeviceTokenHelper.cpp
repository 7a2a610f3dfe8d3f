#include "Public/VLDeviceTokenHelper.h"

namespace vorlane {

namespace {

/// Returns -1 if the character is no hexadecimal digit.
int digitValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

}  // namespace

Data VLDeviceTokenHelper::hexStringToData(const std::string& text) {
    Data data;
    for (std::size_t i = 0; i + 1 < text.size();) {
        const int high = digitValue(text[i]);
        if (high < 0) {
            ++i;
            continue;
        }
        const int low = digitValue(text[i + 1]);
        data.push_back(static_cast<std::uint8_t>(low < 0 ? high : high * 16 + low));
        i += 2;
    }
    return data;
}

}  // namespace vorlane
