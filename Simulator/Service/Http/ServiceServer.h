#pragma once

#include <memory>
#include <string>

#include "Simulator/Service/ServiceOptions.h"

namespace vorlane::service {

class EngagementService;

/// The service on its port. Serves on threads of its own from construction to destruction. Any thread; destroyed on
/// one.
class ServiceServer {
public:
    /// Throws ServiceError if it cannot bind the port or open the database.
    explicit ServiceServer(const ServiceOptions& options = {});
    /// Closes every connection and returns after all threads have ended.
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
