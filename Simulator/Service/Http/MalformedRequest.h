#pragma once

#include <stdexcept>

namespace vorlane::service {

/// A request that an endpoint cannot take. Thrown by endpoints, answered with 400 and this text.
class MalformedRequest : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vorlane::service
