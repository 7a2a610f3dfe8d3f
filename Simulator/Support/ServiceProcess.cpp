#include "Simulator/Support/ServiceProcess.h"

#include <curl/curl.h>
#include <signal.h>

#include <memory>
#include <stdexcept>

#include "Categories/NSDictionary+VLLookup.h"

namespace vorlane::support {

namespace {

std::vector<std::string> serviceCommandLine(const std::string& program, const std::vector<std::string>& options) {
    std::vector<std::string> arguments{program, "--port", "0"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
}

std::string listeningOrigin(ChildProcess& process) {
    const std::string start = "listening on ";
    const auto line = process.readLine();
    if (!line || !line->starts_with(start)) throw std::runtime_error("the service does not listen");
    return line->substr(start.size());
}

std::size_t append(char* bytes, std::size_t size, std::size_t count, void* text) {
    static_cast<std::string*>(text)->append(bytes, size * count);
    return size * count;
}

}  // namespace

ServiceProcess::ServiceProcess(const std::string& program, const std::vector<std::string>& options)
    : process_(serviceCommandLine(program, options)), origin_(listeningOrigin(process_)) {}

Value ServiceProcess::get(const std::string& path) const { return ask("GET", path, std::nullopt); }
Value ServiceProcess::put(const std::string& path, const Value& body) const { return ask("PUT", path, body); }
Value ServiceProcess::post(const std::string& path, const Value& body) const { return ask("POST", path, body); }
void ServiceProcess::remove(const std::string& path) const { ask("DELETE", path, std::nullopt); }

Array ServiceProcess::requests(const std::string& endpoint) const {
    const auto answer = get(endpoint.empty() ? "requests" : "requests?endpoint=" + endpoint);
    const auto* requests = answer.is_object() ? arrayForKey(answer.get_ref<const Dictionary&>(), "requests") : nullptr;
    return requests ? *requests : Array();
}

int ServiceProcess::stop() {
    process_.kill(SIGTERM);
    return process_.wait();
}

Value ServiceProcess::ask(const std::string& method, const std::string& path, const std::optional<Value>& body) const {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> transfer(curl_easy_init(), &curl_easy_cleanup);
    const auto url = origin_ + "/_admin/" + path;
    const auto text = body ? body->dump() : "";
    std::string answer;
    curl_easy_setopt(transfer.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(transfer.get(), CURLOPT_CUSTOMREQUEST, method.c_str());
    if (body) curl_easy_setopt(transfer.get(), CURLOPT_COPYPOSTFIELDS, text.c_str());
    curl_easy_setopt(transfer.get(), CURLOPT_WRITEFUNCTION, &append);
    curl_easy_setopt(transfer.get(), CURLOPT_WRITEDATA, &answer);
    curl_easy_setopt(transfer.get(), CURLOPT_NOPROXY, "*");
    const auto result = curl_easy_perform(transfer.get());
    long status = 0;
    curl_easy_getinfo(transfer.get(), CURLINFO_RESPONSE_CODE, &status);
    if (result != CURLE_OK || status < 200 || status > 299) {
        throw std::runtime_error(method + " " + url + " was answered by " + std::to_string(status) + " " + answer);
    }
    auto value = Value::parse(answer, nullptr, false);
    return value.is_discarded() ? Value() : value;
}

}  // namespace vorlane::support
