#include "Simulator/Phone/PhoneOutput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

void writeAll(std::string_view text) {
    while (!text.empty()) {
        const auto count = ::write(STDOUT_FILENO, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) {
            // The output may be non-blocking.
            pollfd output{STDOUT_FILENO, POLLOUT, 0};
            ::poll(&output, 1, -1);
            continue;
        }
        // The output is closed.
        if (count <= 0) ::_exit(0);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace

void PhoneOutput::event(const std::string& name, Dictionary fields) {
    fields["event"] = name;
    write(fields);
}

void PhoneOutput::reply(const Value& id, Value value) { write({{"reply", id}, {"value", std::move(value)}}); }

void PhoneOutput::exception(const Value& id, const std::string& name, const std::string& reason) {
    write({{"reply", id}, {"exception", Dictionary{{"name", name}, {"reason", reason}}}});
}

void PhoneOutput::error(const Value& id, const std::string& what) { write({{"reply", id}, {"error", what}}); }

void PhoneOutput::write(const Dictionary& line) {
    const auto text = printable(Value(line)).dump(-1, ' ', false, Value::error_handler_t::replace) + "\n";
    const std::lock_guard lock(mutex_);
    writeAll(text);
}

}  // namespace vorlane::phone
