#pragma once

#include <stdexcept>

namespace vorlane::service {

/// Thrown by an endpoint that cannot process a request. Answered with 400 and this message.
class MalformedRequest : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vorlane::service
