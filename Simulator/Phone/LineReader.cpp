#include "Simulator/Phone/LineReader.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <thread>
#include <utility>

namespace vorlane::phone {

LineReader::LineReader(std::function<void()> arrived) {
    // Detached, because it may block on its input for ever.
    std::thread([state = state_, arrived = std::move(arrived)] { read(state, arrived); }).detach();
}

std::optional<LineReader::Line> LineReader::next() {
    const std::lock_guard lock(state_->mutex);
    if (state_->lines.empty()) return std::nullopt;
    auto line = std::move(state_->lines.front());
    state_->lines.pop_front();
    return line;
}

void LineReader::read(const std::shared_ptr<State>& state, const std::function<void()>& arrived) {
    const auto put = [&](Line line) {
        {
            const std::lock_guard lock(state->mutex);
            state->lines.push_back(std::move(line));
        }
        arrived();
    };
    std::string pending;
    std::array<char, 65536> chunk{};
    while (true) {
        const auto count = ::read(STDIN_FILENO, chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) {
            // The input may be non-blocking.
            pollfd input{STDIN_FILENO, POLLIN, 0};
            ::poll(&input, 1, -1);
            continue;
        }
        if (count <= 0) break;
        const std::size_t searched = pending.size();
        pending.append(chunk.data(), static_cast<std::size_t>(count));
        std::size_t start = 0;
        for (auto end = pending.find('\n', searched); end != std::string::npos; end = pending.find('\n', start)) {
            put({pending.substr(start, end - start)});
            start = end + 1;
        }
        pending.erase(0, start);
    }
    if (!pending.empty()) put({pending});
    put({{}, true});
}

}  // namespace vorlane::phone
