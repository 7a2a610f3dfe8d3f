#include "Tests/Platform/Linux/Curl/LoopbackServer.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <csignal>
#include <stdexcept>
#include <utility>

namespace vorlane {

namespace {

std::string lowercased(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

int listenOnLoopback() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 512) != 0) {
        throw std::runtime_error("cannot listen on loopback");
    }
    return listener;
}

int portOf(int listener) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    return ntohs(address.sin_port);
}

/// A peer that closes while OpenSSL writes must not end the test program by SIGPIPE.
void blockSIGPIPE() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

LoopbackServer::Request parsedHead(const std::string& head) {
    LoopbackServer::Request request;
    const auto endOfFirst = head.find("\r\n");
    const std::string first = head.substr(0, endOfFirst);
    const auto space = first.find(' ');
    request.method = first.substr(0, space);
    request.target = first.substr(space + 1, first.rfind(' ') - space - 1);
    for (auto start = endOfFirst + 2; start < head.size();) {
        const auto end = head.find("\r\n", start);
        if (end == start) break;
        const std::string line = head.substr(start, end - start);
        const auto colon = line.find(':');
        const auto value = line.find_first_not_of(' ', colon + 1);
        request.headers[lowercased(line.substr(0, colon))] = value == std::string::npos ? "" : line.substr(value);
        start = end + 2;
    }
    return request;
}

}  // namespace

bool LoopbackServer::Connection::readMore() {
    std::array<char, 65536> bytes{};
    const auto count = ssl_ != nullptr ? SSL_read(ssl_, bytes.data(), static_cast<int>(bytes.size()))
                                       : static_cast<int>(recv(socket_, bytes.data(), bytes.size(), 0));
    if (count <= 0) return false;
    buffer_.append(bytes.data(), static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> LoopbackServer::Connection::readBytes(std::size_t count) {
    while (buffer_.size() < count) {
        if (!readMore()) return std::nullopt;
    }
    std::string bytes = buffer_.substr(0, count);
    buffer_.erase(0, count);
    return bytes;
}

std::optional<LoopbackServer::Request> LoopbackServer::Connection::readRequest() {
    std::size_t end = std::string::npos;
    while ((end = buffer_.find("\r\n\r\n")) == std::string::npos) {
        if (!readMore()) return std::nullopt;
    }
    Request request = parsedHead(*readBytes(end + 4));
    const auto length = request.headers.find("content-length");
    if (length == request.headers.end()) return request;
    auto body = readBytes(std::stoul(length->second));
    if (!body) return std::nullopt;
    request.body = std::move(*body);
    return request;
}

bool LoopbackServer::Connection::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto length = std::min<std::size_t>(bytes.size(), 1 << 20);
        const auto count = ssl_ != nullptr ? SSL_write(ssl_, bytes.data(), static_cast<int>(length))
                                           : static_cast<int>(send(socket_, bytes.data(), length, MSG_NOSIGNAL));
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void LoopbackServer::Connection::reset() {
    const linger abrupt{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &abrupt, sizeof abrupt);
}

void LoopbackServer::Connection::staySilent() {
    while (readMore()) buffer_.clear();
}

void LoopbackServer::Connection::pause(int milliseconds) {
    pollfd peer{socket_, POLLRDHUP, 0};
    poll(&peer, 1, milliseconds);
}

LoopbackServer::LoopbackServer(Script script, SSL_CTX* context)
    : script_(std::move(script)), context_(context), listener_(listenOnLoopback()), port_(portOf(listener_)) {
    acceptor_ = std::thread([this] { acceptAll(); });
}

LoopbackServer::~LoopbackServer() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
        for (const int socket : sockets_) shutdown(socket, SHUT_RDWR);
    }
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    for (auto& thread : threads_) thread.join();
    for (const int socket : sockets_) close(socket);
    close(listener_);
}

LoopbackServer::Script LoopbackServer::answering(std::function<std::string(const Request&)> answer) {
    return [answer = std::move(answer)](Connection& connection) {
        while (const auto request = connection.readRequest()) {
            if (!connection.write(answer(*request))) return;
        }
    };
}

std::string LoopbackServer::answer(int status, std::string_view body, std::string_view headers) {
    return fmt::format("HTTP/1.1 {} Any\r\nContent-Length: {}\r\n{}\r\n{}", status, body.size(), headers, body);
}

std::string LoopbackServer::url(std::string_view path) const {
    return fmt::format("{}://127.0.0.1:{}{}", context_ != nullptr ? "https" : "http", port_, path);
}

int LoopbackServer::connectionCount() const {
    const std::lock_guard lock(mutex_);
    return made_;
}

int LoopbackServer::mostConnections() const {
    const std::lock_guard lock(mutex_);
    return mostOpen_;
}

void LoopbackServer::waitForConnections(int count) const {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this, count] { return made_ >= count; });
}

void LoopbackServer::acceptAll() {
    for (;;) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex_);
        if (socket < 0) {
            if (isEnding_) return;
            continue;
        }
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (isEnding_) shutdown(socket, SHUT_RDWR);
        sockets_.push_back(socket);
        mostOpen_ = std::max(mostOpen_, ++open_);
        threads_.emplace_back([this, socket, number = ++made_] { serve(socket, number); });
        changed_.notify_all();
    }
}

void LoopbackServer::serve(int socket, int number) {
    blockSIGPIPE();
    const std::unique_ptr<SSL, decltype(&SSL_free)> ssl(context_ != nullptr ? SSL_new(context_) : nullptr, &SSL_free);
    if (ssl) SSL_set_fd(ssl.get(), socket);
    if (!ssl || SSL_accept(ssl.get()) == 1) {
        Connection connection(socket, ssl.get(), number);
        script_(connection);
    }
    const std::lock_guard lock(mutex_);
    --open_;
    if (isEnding_) return;
    std::erase(sockets_, socket);
    close(socket);
}

}  // namespace vorlane
