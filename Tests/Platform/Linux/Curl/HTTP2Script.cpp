#include "Tests/Platform/Linux/Curl/HTTP2Script.h"

#include <array>
#include <cstdint>
#include <optional>
#include <utility>

namespace vorlane {

namespace {

enum FrameType : std::uint8_t { Data = 0, Headers = 1, Settings = 4, Ping = 6 };
constexpr std::uint8_t kAcknowledgement = 1;
constexpr std::uint8_t kEndOfStream = 1;
constexpr std::uint8_t kEndOfHeaders = 4;
// ":status: 200", the eighth entry of the static table.
constexpr const char* kStatus200 = "\x88";

struct Frame {
    std::uint8_t type = 0;
    std::uint8_t flags = 0;
    /// Big-endian.
    std::string stream;
    std::string payload;
};

std::uint8_t byteAt(const std::string& bytes, std::size_t index) { return static_cast<std::uint8_t>(bytes[index]); }

std::optional<Frame> readFrame(LoopbackServer::Connection& connection) {
    const auto head = connection.readBytes(9);
    if (!head) return std::nullopt;
    const std::size_t length = static_cast<std::size_t>(byteAt(*head, 0)) << 16 |
                               static_cast<std::size_t>(byteAt(*head, 1)) << 8 | byteAt(*head, 2);
    auto payload = connection.readBytes(length);
    if (!payload) return std::nullopt;
    return Frame{byteAt(*head, 3), byteAt(*head, 4), head->substr(5), std::move(*payload)};
}

std::string encoded(const Frame& frame) {
    std::string bytes;
    for (const int shift : {16, 8, 0}) bytes += static_cast<char>(frame.payload.size() >> shift & 0xff);
    bytes += static_cast<char>(frame.type);
    bytes += static_cast<char>(frame.flags);
    return bytes + frame.stream + frame.payload;
}

int chooseHTTP2(SSL*, const unsigned char** out, unsigned char* outLength, const unsigned char* offered,
                unsigned int offeredLength, void*) {
    static constexpr std::array<unsigned char, 3> kHTTP2{2, 'h', '2'};
    unsigned char* chosen = nullptr;
    const int result = SSL_select_next_proto(&chosen, outLength, kHTTP2.data(), kHTTP2.size(), offered, offeredLength);
    *out = chosen;
    return result == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_NOACK;
}

std::string answerTo(const Frame& frame, const std::string& body) {
    const std::string noStream(4, '\0');
    const bool isAcknowledgement = (frame.flags & kAcknowledgement) != 0;
    if (frame.type == Settings && !isAcknowledgement) return encoded({Settings, kAcknowledgement, noStream, {}});
    if (frame.type == Ping && !isAcknowledgement) return encoded({Ping, kAcknowledgement, noStream, frame.payload});
    const bool endsRequest = (frame.type == Headers || frame.type == Data) && (frame.flags & kEndOfStream) != 0;
    if (!endsRequest) return {};
    return encoded({Headers, kEndOfHeaders, frame.stream, kStatus200}) +
           encoded({Data, kEndOfStream, frame.stream, body});
}

}  // namespace

void offerHTTP2(SSL_CTX* context) { SSL_CTX_set_alpn_select_cb(context, &chooseHTTP2, nullptr); }

LoopbackServer::Script http2Script(std::string body) {
    return [body = std::move(body)](LoopbackServer::Connection& connection) {
        constexpr std::size_t kPrefaceLength = 24;
        if (!connection.readBytes(kPrefaceLength)) return;
        connection.write(encoded({Settings, 0, std::string(4, '\0'), {}}));
        while (const auto frame = readFrame(connection)) {
            if (!connection.write(answerTo(*frame, body))) return;
        }
    };
}

}  // namespace vorlane
