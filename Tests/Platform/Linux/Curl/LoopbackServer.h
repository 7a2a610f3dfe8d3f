#pragma once

#include <openssl/ssl.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vorlane {

/// A server on 127.0.0.1 that runs a script for each connection, faults included. Its destruction closes all sockets.
class LoopbackServer {
public:
    struct Request {
        std::string method;
        std::string target;
        /// By name in lower case.
        std::map<std::string, std::string> headers;
        std::string body;
    };

    /// One connection, on its own thread.
    class Connection {
    public:
        Connection(int socket, SSL* ssl, int number) : socket_(socket), ssl_(ssl), number_(number) {}

        /// Reads the next request; `nullopt` if the peer has closed the connection.
        std::optional<Request> readRequest();
        /// Reads exactly `count` bytes; `nullopt` if the peer closes the connection first.
        std::optional<std::string> readBytes(std::size_t count);
        /// Returns whether all bytes were sent.
        bool write(std::string_view bytes);
        /// Closes the connection with a reset.
        void reset();
        /// Sends nothing until the peer closes the connection or the server is destroyed.
        void staySilent();
        /// Sends nothing for this time, or until the peer closes the connection.
        void pause(int milliseconds);

        /// Counted from 1.
        int number() const { return number_; }
        SSL* ssl() const { return ssl_; }

    private:
        bool readMore();

        const int socket_;
        SSL* const ssl_;
        const int number_;
        std::string buffer_;
    };

    using Script = std::function<void(Connection&)>;

    /// With a `context`, which must outlive the server, it is a TLS server.
    explicit LoopbackServer(Script script, SSL_CTX* context = nullptr);
    ~LoopbackServer();

    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    /// Answers every request of every connection.
    static Script answering(std::function<std::string(const Request&)> answer);
    /// An HTTP/1.1 response. `headers` are complete lines.
    static std::string answer(int status, std::string_view body = {}, std::string_view headers = {});

    int port() const { return port_; }
    std::string url(std::string_view path = "/") const;

    /// The number of connections made so far.
    int connectionCount() const;
    /// The largest number of connections that were open at a time.
    int mostConnections() const;
    /// Waits until `count` connections have been made.
    void waitForConnections(int count) const;

private:
    void acceptAll();
    void serve(int socket, int number);

    const Script script_;
    SSL_CTX* const context_;
    int listener_ = -1;
    int port_ = 0;
    std::thread acceptor_;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    // Guarded by mutex_.
    bool isEnding_ = false;
    int made_ = 0;
    int open_ = 0;
    int mostOpen_ = 0;
    std::vector<int> sockets_;
    std::vector<std::thread> threads_;
};

}  // namespace vorlane
