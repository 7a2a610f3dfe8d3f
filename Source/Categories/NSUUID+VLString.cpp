#include "Categories/NSUUID+VLString.h"

#include <uuid/uuid.h>

#include <array>

namespace vorlane {

std::string vl_newUUIDString() {
    uuid_t identifier;
    uuid_generate_random(identifier);
    std::array<char, UUID_STR_LEN> text{};
    uuid_unparse_upper(identifier, text.data());
    return text.data();
}

}  // namespace vorlane
