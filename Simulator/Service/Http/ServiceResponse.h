#pragma once

#include <map>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// What the service answers, and how the answer is to go over the wire. A plain value.
struct ServiceResponse {
    enum class Delivery {
        /// As it is.
        whole,
        /// Half of the body, though its whole length is announced; then the connection is closed.
        truncated,
        /// The body alone, without anything of HTTP; then the connection is closed.
        raw,
        /// Nothing: the connection is closed.
        none,
    };

    int status = 200;
    std::string contentType = "application/json";
    std::string body;
    /// Headers beside those that go without saying.
    std::map<std::string, std::string> headers;
    Delivery delivery = Delivery::whole;

    static ServiceResponse json(const Value& value, int status = 200);
    /// What is answered when there is nothing to say.
    static ServiceResponse ok();
    static ServiceResponse error(int status, const std::string& text);
};

/// A value as compact JSON text; what is not UTF-8 in it is replaced. Holds nothing nested deeper than a parsed
/// request.
std::string jsonText(const Value& value);

}  // namespace vorlane::service
