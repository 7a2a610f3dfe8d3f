#pragma once

#include <string>

namespace vorlane::service {

/// A plain TCP connection to a service, for requests and answers that no HTTP client handles.
class RawConnection {
public:
    explicit RawConnection(int port);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    RawConnection& send(const std::string& bytes);
    /// Ends the request.
    RawConnection& end();
    /// Returns everything that the service sends until it closes the connection.
    std::string receiveAll();

private:
    const int socket_;
};

}  // namespace vorlane::service
