#pragma once

#include <httplib.h>

#include <functional>
#include <optional>
#include <string>

namespace vorlane::service {

class SocketConnection;
class StopSignal;

/// The HTTP library's server, on connections that can be cut, and with a thread for each connection.
class HTTPServer : public httplib::Server {
public:
    /// `stopSignal` must outlive the server.
    explicit HTTPServer(const StopSignal& stopSignal) : stopSignal_(stopSignal) {}

    /// Returns the bound port, or `nullopt` on failure.
    std::optional<int> bind(const std::string& host, int port);

    /// `started` runs on the listening thread once nothing can fail any more.
    void setStartHandler(std::function<void()> started);

    /// Makes listen_after_bind() return. Unlike stop(), lets that thread close the socket.
    void stopListening();

    /// The connection that the current thread serves. Only while it serves a request.
    static SocketConnection& currentConnection();

private:
    bool process_and_close_socket(socket_t socket) override;

    // Fixed at construction.
    const StopSignal& stopSignal_;
};

}  // namespace vorlane::service
