#include "Categories/NSString+VLCaseInsensitive.h"

#include "Platform/Internal/ASCIICase.h"

namespace vorlane {

bool vl_isEqualToStringCaseInsensitive(std::string_view text, std::string_view other) {
    return isEqualIgnoringCase(text, other);
}

}  // namespace vorlane
