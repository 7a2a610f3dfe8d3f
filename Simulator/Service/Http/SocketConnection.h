#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace vorlane::service {

class StopSignal;

/// One accepted connection, closed on destruction. One thread. A wait ends when the service stops, or after 30 seconds
/// without a byte.
class SocketConnection {
public:
    SocketConnection(int socket, const StopSignal& stopSignal);
    ~SocketConnection();
    SocketConnection(const SocketConnection&) = delete;
    SocketConnection& operator=(const SocketConnection&) = delete;

    /// Waits for data. Returns false if none arrives.
    bool waitUntilReadable();
    bool waitUntilWritable() const;
    /// Returns the number of bytes read; 0 at the end, -1 on failure.
    ssize_t read(char* bytes, std::size_t size);
    /// Returns the number of bytes written; -1 on failure, and always after `cut()`.
    ssize_t write(const char* bytes, std::size_t size);
    /// Returns false if not all bytes could be written.
    bool writeAll(std::string_view bytes);

    /// Later writes fail.
    void cut() { isCut_ = isLast_ = true; }
    /// No further request is read.
    void finish() { isLast_ = true; }
    bool isFinished() const { return isLast_; }
    int socket() const { return socket_; }

private:
    bool waitFor(short events) const;

    // Fixed at construction.
    const int socket_;
    const StopSignal& stopSignal_;
    bool isCut_ = false;
    bool isLast_ = false;
    // Received bytes that are not read yet: from position_ to end_.
    std::array<char, 16384> buffer_{};
    std::size_t position_ = 0;
    std::size_t end_ = 0;
};

}  // namespace vorlane::service
