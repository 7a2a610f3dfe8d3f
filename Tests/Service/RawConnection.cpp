#include "Tests/Service/RawConnection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace vorlane::service {

RawConnection::RawConnection(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot connect");
}

RawConnection::~RawConnection() { close(socket_); }

RawConnection& RawConnection::send(const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
        const auto count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) break;  // the service has closed the connection
        sent += static_cast<std::size_t>(count);
    }
    return *this;
}

RawConnection& RawConnection::end() {
    shutdown(socket_, SHUT_WR);
    return *this;
}

std::string RawConnection::receiveAll() {
    std::string received;
    std::array<char, 4096> buffer{};
    while (true) {
        const auto count = recv(socket_, buffer.data(), buffer.size(), 0);
        if (count <= 0) return received;
        received.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace vorlane::service
