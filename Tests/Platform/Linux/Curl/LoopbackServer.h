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

/// A server of sockets on 127.0.0.1 that does to each connection what a script says, faults included. Its end closes
/// everything.
class LoopbackServer {
public:
    struct Request {
        std::string method;
        std::string target;
        /// By names in lower case.
        std::map<std::string, std::string> headers;
        std::string body;
    };

    /// One connection, on a thread of its own.
    class Connection {
    public:
        Connection(int socket, SSL* ssl, int number) : socket_(socket), ssl_(ssl), number_(number) {}

        /// The next request; nothing once the peer has hung up.
        std::optional<Request> readRequest();
        /// Exactly that many bytes; nothing when the peer hangs up before.
        std::optional<std::string> readBytes(std::size_t count);
        /// Returns whether the peer took them.
        bool write(std::string_view bytes);
        /// Hangs up rudely: the peer sees a reset instead of an end.
        void reset();
        /// Says nothing more until the peer hangs up or the server ends.
        void staySilent();
        /// Says nothing for that long, or until the peer hangs up.
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

    /// `context` makes it a TLS server; it must outlive the server.
    explicit LoopbackServer(Script script, SSL_CTX* context = nullptr);
    ~LoopbackServer();

    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    /// Answers every request of every connection.
    static Script answering(std::function<std::string(const Request&)> answer);
    /// An HTTP/1.1 answer. `headers` are whole lines.
    static std::string answer(int status, std::string_view body = {}, std::string_view headers = {});

    int port() const { return port_; }
    std::string url(std::string_view path = "/") const;

    /// How many connections were ever made.
    int connectionCount() const;
    /// How many were open at the same time at most.
    int mostConnections() const;
    /// Waits until that many were made.
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
