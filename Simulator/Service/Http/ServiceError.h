#pragma once

#include <stdexcept>

namespace vorlane::service {

/// Something the service itself cannot do: open its database, bind its port. Its text is for the operator.
class ServiceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vorlane::service
