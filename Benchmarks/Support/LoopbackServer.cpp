#include "Benchmarks/Support/LoopbackServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <new>
#include <string_view>
#include <system_error>

namespace vorlane::benchmarks {

namespace {

std::string response(std::string_view body) {
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + std::string(body);
}

/// Complete responses, prepared before the first request.
Answers responsesOf(const Answers& answers) {
    Answers responses;
    for (const auto& [part, body] : answers) responses.emplace(part, response(body));
    return responses;
}

int check(int result, const char* what) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), what);
    return result;
}

int listenOnLoopback() {
    const int listener = check(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    check(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
    check(listen(listener, 128), "listen");
    return listener;
}

std::uint16_t portOf(int listener) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    check(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length), "getsockname");
    return ntohs(address.sin_port);
}

/// Returns the length of the first request in the buffer, or 0 while it is incomplete.
std::size_t completeRequest(std::string_view buffer) {
    const auto headEnd = buffer.find("\r\n\r\n");
    if (headEnd == std::string_view::npos) return 0;
    constexpr std::string_view kLength = "Content-Length: ";
    const auto head = buffer.substr(0, headEnd);
    const auto found = head.find(kLength);
    const auto bodyLength =
        found == std::string_view::npos ? 0 : std::strtoul(head.data() + found + kLength.size(), nullptr, 10);
    const auto length = headEnd + 4 + bodyLength;
    return buffer.size() >= length ? length : 0;
}

void watch(int poller, int descriptor) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    check(epoll_ctl(poller, EPOLL_CTL_ADD, descriptor, &event), "epoll_ctl");
}

}  // namespace

LoopbackServer::LoopbackServer(Manner manner) : LoopbackServer(manner, Answers()) {}

LoopbackServer::LoopbackServer(Answers answers) : LoopbackServer(Manner::Answers, answers) {}

LoopbackServer::LoopbackServer(Manner manner, const Answers& answers) {
    const int listener = listenOnLoopback();
    port_ = portOf(listener);
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) check(-1, "mmap");
    shared_ = new (memory) Shared();
    std::array<int, 2> ends{};
    check(pipe(ends.data()), "pipe");
    process_ = check(fork(), "fork");
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        close(ends[0]);
        serve(listener, manner, answers, *shared_, ends[1]);
    }
    close(listener);
    close(ends[1]);
    reached_ = ends[0];
}

LoopbackServer::~LoopbackServer() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    close(reached_);
    munmap(shared_, sizeof(Shared));
}

void LoopbackServer::expect(std::uint64_t count) {
    shared_->requests = 0;
    shared_->expected = count;
}

void LoopbackServer::wait() const {
    char byte = 0;
    while (read(reached_, &byte, 1) < 0 && errno == EINTR) {
    }
}

void LoopbackServer::serve(int listener, Manner manner, const Answers& answers, Shared& shared, int reached) {
    const auto responses = responsesOf(answers);
    const auto empty = response("{}");
    const int poller = check(epoll_create1(0), "epoll_create1");
    watch(poller, listener);
    std::map<int, std::string> buffers;
    std::array<char, 65536> chunk{};
    while (true) {
        epoll_event event{};
        if (epoll_wait(poller, &event, 1, -1) <= 0) continue;
        if (event.data.fd == listener) {
            const int connection = accept(listener, nullptr, nullptr);
            if (connection < 0) continue;
            const int yes = 1;
            setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
            watch(poller, connection);
            continue;
        }
        const auto count = read(event.data.fd, chunk.data(), chunk.size());
        if (count <= 0) {
            buffers.erase(event.data.fd);
            close(event.data.fd);
            continue;
        }
        auto& buffer = buffers[event.data.fd];
        buffer.append(chunk.data(), static_cast<std::size_t>(count));
        while (const auto length = completeRequest(buffer)) {
            const auto* told = answerTo(responses, std::string_view(buffer).substr(0, buffer.find("\r\n")));
            const auto& answer = told ? *told : empty;
            buffer.erase(0, length);
            if (manner == Manner::Answers && write(event.data.fd, answer.data(), answer.size()) < 0) break;
            if (++shared.requests == shared.expected && write(reached, "x", 1) < 0) _exit(1);
        }
    }
}

}  // namespace vorlane::benchmarks
