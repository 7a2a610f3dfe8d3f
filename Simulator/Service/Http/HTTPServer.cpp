#include "Simulator/Service/Http/HTTPServer.h"

#include <sys/socket.h>

#include <cstddef>
#include <utility>

#include "Simulator/Service/Http/SocketConnection.h"
#include "Simulator/Service/Http/WorkerThreads.h"

namespace vorlane::service {
namespace {

constexpr int kBacklog = 512;

/// Adapts a connection to the HTTP library.
class ConnectionStream : public httplib::Stream {
public:
    explicit ConnectionStream(SocketConnection& connection) : connection_(connection) {}

    bool is_readable() const override { return connection_.waitUntilReadable(); }
    bool is_writable() const override { return connection_.waitUntilWritable(); }
    ssize_t read(char* bytes, size_t size) override { return connection_.read(bytes, size); }
    ssize_t write(const char* bytes, size_t size) override { return connection_.write(bytes, size); }
    // The address of the client is not used.
    void get_remote_ip_and_port(std::string& ip, int& port) const override {
        ip.clear();
        port = 0;
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override {
        ip.clear();
        port = 0;
    }
    socket_t socket() const override { return connection_.socket(); }

private:
    SocketConnection& connection_;
};

class ConnectionQueue : public httplib::TaskQueue {
public:
    void enqueue(std::function<void()> task) override { threads_.run(std::move(task)); }
    void shutdown() override { threads_.finish(); }

private:
    WorkerThreads threads_;
};

thread_local SocketConnection* servedConnection = nullptr;

}  // namespace

std::optional<int> HTTPServer::bind(const std::string& host, int port) {
    // Without SO_REUSEPORT, which the library sets, and which would let two services share a port unnoticed.
    set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    const int bound = port == 0 ? bind_to_any_port(host) : bind_to_port(host, port) ? port : -1;
    if (bound <= 0) return std::nullopt;
    // With the library's short backlog, a burst of connections loses a second to retransmissions.
    ::listen(svr_sock_, kBacklog);
    return bound;
}

void HTTPServer::setStartHandler(std::function<void()> started) {
    new_task_queue = [started = std::move(started)] {
        started();
        return new ConnectionQueue;
    };
}

void HTTPServer::stopListening() { ::shutdown(svr_sock_, SHUT_RDWR); }

SocketConnection& HTTPServer::currentConnection() { return *servedConnection; }

bool HTTPServer::process_and_close_socket(socket_t socket) {
    SocketConnection connection(socket, stopSignal_);
    ConnectionStream stream(connection);
    servedConnection = &connection;
    bool isGoing = true;
    while (isGoing && connection.waitUntilReadable()) {
        bool isLast = false;
        isGoing = process_request(stream, false, isLast, nullptr) && !isLast && !connection.isFinished();
    }
    servedConnection = nullptr;
    return true;
}

}  // namespace vorlane::service
