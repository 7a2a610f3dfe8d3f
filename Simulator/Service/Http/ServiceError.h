#pragma once

#include <stdexcept>

namespace vorlane::service {

/// Thrown if the service cannot run: it cannot open its database or bind its port. The message is for the operator.
class ServiceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vorlane::service
