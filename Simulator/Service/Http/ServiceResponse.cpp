#include "Simulator/Service/Http/ServiceResponse.h"

namespace vorlane::service {

ServiceResponse ServiceResponse::json(const Value& value, int status) {
    ServiceResponse response;
    response.status = status;
    response.body = jsonText(value);
    return response;
}

ServiceResponse ServiceResponse::ok() { return json({{"result", "ok"}}); }

ServiceResponse ServiceResponse::error(int status, const std::string& text) { return json({{"error", text}}, status); }

std::string jsonText(const Value& value) { return value.dump(-1, ' ', false, Value::error_handler_t::replace); }

}  // namespace vorlane::service
