#pragma once

#include <memory>
#include <string>

#include "Simulator/Service/ServiceOptions.h"

namespace vorlane::service {

class EngagementService;

/// The service on its port, serving from threads of its own from construction to destruction. Any thread, except that
/// one alone destroys it.
class ServiceServer {
public:
    /// Throws ServiceError when the port or the database cannot be had.
    explicit ServiceServer(const ServiceOptions& options = {});
    /// Closes every connection and returns when all threads are gone.
    ~ServiceServer();
    ServiceServer(const ServiceServer&) = delete;
    ServiceServer& operator=(const ServiceServer&) = delete;

    int port() const;
    /// "http://127.0.0.1:8780"
    std::string origin() const;
    EngagementService& service();

private:
    class Implementation;
    const std::unique_ptr<Implementation> implementation_;
};

}  // namespace vorlane::service
