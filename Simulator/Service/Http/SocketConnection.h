#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace vorlane::service {

class StopSignal;

/// One accepted connection, which it closes in the end. One thread. Waiting ends when the service stops, and after
/// 30 seconds without a byte.
class SocketConnection {
public:
    SocketConnection(int socket, const StopSignal& stopSignal);
    ~SocketConnection();
    SocketConnection(const SocketConnection&) = delete;
    SocketConnection& operator=(const SocketConnection&) = delete;

    /// Whether there is, or comes, something to read.
    bool waitUntilReadable();
    bool waitUntilWritable() const;
    /// How many bytes were read; 0 at the end, -1 on failure.
    ssize_t read(char* bytes, std::size_t size);
    /// How many bytes were written; -1 on failure, and always once the connection is cut.
    ssize_t write(const char* bytes, std::size_t size);
    /// False when not all could be written.
    bool writeAll(std::string_view bytes);

    /// Nothing is written any more.
    void cut() { isCut_ = isLast_ = true; }
    /// No further request is taken.
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
    // What was received and not yet read: from position_ to end_.
    std::array<char, 16384> buffer_{};
    std::size_t position_ = 0;
    std::size_t end_ = 0;
};

}  // namespace vorlane::service
