#include "Simulator/Service/ServiceOptions.h"

#include <fmt/format.h>

#include <charconv>

#include "Simulator/Service/Http/ServiceError.h"

namespace vorlane::service {
namespace {

constexpr int kHighestPort = 65535;

int portOf(const std::string& text) {
    int port = -1;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, port);
    if (result.ec == std::errc() && result.ptr == end && port >= 0 && port <= kHighestPort) return port;
    throw ServiceError(fmt::format("\"{}\" is not a port", text));
}

void take(ServiceOptions& options, const std::string& name, const std::string& value) {
    if (name == "--port") {
        options.port = portOf(value);
    } else if (name == "--host") {
        options.host = value;
    } else if (name == "--database") {
        options.database = value;
    } else if (name == "--log-requests") {
        options.requestLog = value;
    } else {
        throw ServiceError(fmt::format("unknown option {}", name));
    }
}

}  // namespace

ServiceOptions ServiceOptions::fromArguments(const std::vector<std::string>& arguments) {
    ServiceOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        auto name = arguments[i];
        const auto equals = name.find('=');
        if (name == "--help") {
            options.wantsHelp = true;
        } else if (equals != std::string::npos) {
            take(options, name.substr(0, equals), name.substr(equals + 1));
        } else if (++i < arguments.size()) {
            take(options, name, arguments[i]);
        } else {
            throw ServiceError(fmt::format("{} needs a value, or is unknown", name));
        }
    }
    return options;
}

std::string ServiceOptions::usage() {
    return "usage: vorlane-service [--port N] [--host ADDRESS] [--database FILE] [--log-requests FILE]\n"
           "\n"
           "A local engagement service. Prints \"listening on http://ADDRESS:PORT\", then serves until SIGTERM or "
           "SIGINT.\n"
           "\n"
           "  --port N              the port; 0, the default, chooses a free port\n"
           "  --host ADDRESS        the address to listen on; 127.0.0.1 by default\n"
           "  --database FILE       the SQLite database; by default :memory:, which is lost at the end\n"
           "  --log-requests FILE   appends every request to this file, one JSON object a line; - is standard output\n"
           "  --help                prints this text\n"
           "\n"
           "GET / lists its endpoints.\n";
}

}  // namespace vorlane::service
