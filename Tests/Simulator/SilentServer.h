#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorlane {

/// A server that accepts connections and never answers; destroying it closes every connection.
class SilentServer {
public:
    SilentServer() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        auto* const general = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket_, general, length) != 0 || ::listen(socket_, 64) != 0 ||
            ::getsockname(socket_, general, &length) != 0) {
            throw std::runtime_error("no server");
        }
        origin_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    }
    ~SilentServer() { close(); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    const std::string& origin() const { return origin_; }

    /// Blocks until the next connection.
    void accept() { connections_.push_back(::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC)); }

    void close() {
        connections_.push_back(std::exchange(socket_, -1));
        for (const int connection : std::exchange(connections_, {})) {
            if (connection >= 0) ::close(connection);
        }
    }

private:
    int socket_;
    std::vector<int> connections_;
    std::string origin_;
};

}  // namespace vorlane
