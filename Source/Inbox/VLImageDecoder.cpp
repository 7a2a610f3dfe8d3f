#include "Inbox/VLImageDecoder.h"

#include <string_view>

#include "Inbox/JPEGDecoder.h"
#include "Inbox/PNGDecoder.h"
#include "Inbox/WebPDecoder.h"

namespace vorlane {

namespace {

bool startsWith(const Data& data, std::string_view signature, std::size_t place = 0) {
    if (data.size() < place + signature.size()) return false;
    return std::string_view(static_cast<const char*>(static_cast<const void*>(data.data())) + place,
                            signature.size()) == signature;
}

}  // namespace

std::optional<VLImageDecoder::Description> VLImageDecoder::describe(const Data& data, std::uint64_t mostMemory) {
    if (startsWith(data, "\x89PNG\r\n\x1A\n")) return PNGDecoder::describe(data, mostMemory);
    if (startsWith(data, "\xFF\xD8\xFF")) return JPEGDecoder::describe(data, mostMemory);
    if (startsWith(data, "RIFF") && startsWith(data, "WEBP", 8)) return WebPDecoder::describe(data, mostMemory);
    return std::nullopt;
}

}  // namespace vorlane
