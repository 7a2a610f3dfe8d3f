#include "Categories/NSString+VLHash.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>

namespace vorlane {

std::string vl_md5(const std::string& text) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    EVP_Digest(text.data(), text.size(), digest.data(), &length, EVP_md5(), nullptr);
    std::string result;
    for (unsigned i = 0; i < length; ++i) result += fmt::format("{:02x}", digest.at(i));
    return result;
}

}  // namespace vorlane
