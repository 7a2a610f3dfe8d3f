#include "Tests/Service/ServiceClient.h"

#include <httplib.h>

#include "Categories/NSCharacterSet+VLURLEncoding.h"

namespace vorlane::service {
namespace {

constexpr int kPatienceSeconds = 100;

httplib::Client clientOf(int port) {
    httplib::Client client("127.0.0.1", port);
    // Targets are sent unchanged.
    client.set_url_encode(false);
    client.set_read_timeout(kPatienceSeconds);
    return client;
}

ServiceAnswer answerOf(const httplib::Result& result) {
    ServiceAnswer answer;
    if (!result) return answer;
    answer.status = result->status;
    answer.body = result->body;
    for (const auto& [name, value] : result->headers) answer.headers[name] = value;
    return answer;
}

}  // namespace

ServiceAnswer ServiceClient::get(const std::string& target) const { return answerOf(clientOf(port_).Get(target)); }

ServiceAnswer ServiceClient::del(const std::string& target) const { return answerOf(clientOf(port_).Delete(target)); }

ServiceAnswer ServiceClient::post(const std::string& target, const std::string& body,
                                  const std::string& contentType) const {
    return answerOf(clientOf(port_).Post(target, body, contentType));
}

ServiceAnswer ServiceClient::put(const std::string& target, const Value& json) const {
    return answerOf(clientOf(port_).Put(target, json.dump(), "application/json"));
}

ServiceAnswer ServiceClient::options(const std::string& target) const {
    return answerOf(clientOf(port_).Options(target));
}

ServiceAnswer ServiceClient::postJSON(const std::string& target, const Value& json) const {
    return post(target, json.dump(), "application/json");
}

ServiceAnswer ServiceClient::postForm(const std::string& target, const Value& payload) const {
    const auto text = stringByAddingPercentEncoding(payload.dump(), vl_formURLEncodingAllowedCharacterSet());
    return post(target, "payload=" + text, "application/x-www-form-urlencoded");
}

}  // namespace vorlane::service
