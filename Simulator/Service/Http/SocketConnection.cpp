#include "Simulator/Service/Http/SocketConnection.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Simulator/Service/Http/StopSignal.h"

namespace vorlane::service {
namespace {

constexpr int kPatienceMilliseconds = 30'000;
constexpr std::size_t kMostLeftovers = 64UL << 20U;

}  // namespace

SocketConnection::SocketConnection(int socket, const StopSignal& stopSignal)
    : socket_(socket), stopSignal_(stopSignal) {}

SocketConnection::~SocketConnection() {
    // Closing a connection with unread bytes resets it, which could discard the answer at the client. So the end of the
    // answer is announced, and bytes received so far are discarded.
    shutdown(socket_, SHUT_WR);
    for (std::size_t thrown = 0; thrown < kMostLeftovers;) {
        const auto count = recv(socket_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
        if (count <= 0) break;
        thrown += static_cast<std::size_t>(count);
    }
    close(socket_);
}

bool SocketConnection::waitUntilReadable() { return position_ < end_ || waitFor(POLLIN); }

bool SocketConnection::waitUntilWritable() const { return !isCut_ && waitFor(POLLOUT); }

ssize_t SocketConnection::read(char* bytes, std::size_t size) {
    if (position_ == end_) {
        if (!waitFor(POLLIN)) return -1;
        const auto received = recv(socket_, buffer_.data(), buffer_.size(), 0);
        if (received <= 0) return received;
        position_ = 0;
        end_ = static_cast<std::size_t>(received);
    }
    const auto count = std::min(size, end_ - position_);
    std::copy_n(buffer_.data() + position_, count, bytes);
    position_ += count;
    return static_cast<ssize_t>(count);
}

ssize_t SocketConnection::write(const char* bytes, std::size_t size) {
    if (!waitUntilWritable()) return -1;
    return send(socket_, bytes, size, MSG_NOSIGNAL);
}

bool SocketConnection::writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = write(bytes.data(), bytes.size());
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool SocketConnection::waitFor(short events) const {
    while (true) {
        std::array<pollfd, 2> descriptors{{{socket_, events, 0}, {stopSignal_.descriptor(), POLLIN, 0}}};
        const int ready = poll(descriptors.data(), descriptors.size(), kPatienceMilliseconds);
        if (ready > 0) return descriptors[1].revents == 0;
        if (ready == 0 || errno != EINTR) return false;
    }
}

}  // namespace vorlane::service
