#pragma once

#include <map>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// An answer of the service, and how it is sent.
struct ServiceResponse {
    enum class Delivery {
        /// Unchanged.
        Whole,
        /// Announces the whole length, sends half of the body, then closes the connection.
        Truncated,
        /// Sends the body without an HTTP header, then closes the connection.
        Raw,
        /// Closes the connection without an answer.
        None,
    };

    int status = 200;
    std::string contentType = "application/json";
    std::string body;
    /// Further headers.
    std::map<std::string, std::string> headers;
    Delivery delivery = Delivery::Whole;

    static ServiceResponse json(const Value& value, int status = 200);
    /// The answer of an endpoint that has no data to return.
    static ServiceResponse ok();
    static ServiceResponse error(int status, const std::string& text);
};

/// Returns the value as compact JSON; bytes that are not UTF-8 are replaced. The value must not be nested more deeply
/// than a parsed request.
std::string jsonText(const Value& value);

}  // namespace vorlane::service
