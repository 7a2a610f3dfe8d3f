#pragma once

#include <string>

namespace vorlane::service {

/// A bare TCP connection to a service, for what no HTTP client would send or accept.
class RawConnection {
public:
    explicit RawConnection(int port);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    RawConnection& send(const std::string& bytes);
    /// No more is sent.
    RawConnection& end();
    /// All that comes until the service closes the connection.
    std::string receiveAll();

private:
    const int socket_;
};

}  // namespace vorlane::service
