#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace vorlane::phone {

/// Reads lines from standard input on a thread of its own, so that the phone's clock can run meanwhile.
class LineReader {
public:
    /// `arrived` is called, on the reader's thread, for each line and for the end.
    explicit LineReader(std::function<void()> arrived);

    struct Line {
        std::string text;
        bool isEnd = false;
    };
    /// The next line, or the end; nothing when none has arrived yet.
    std::optional<Line> next();

private:
    struct State {
        std::mutex mutex;
        // Guarded by mutex.
        std::deque<Line> lines;
    };

    static void read(const std::shared_ptr<State>& state, const std::function<void()>& arrived);

    const std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace vorlane::phone
