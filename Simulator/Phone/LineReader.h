#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace vorlane::phone {

/// Reads lines from standard input on a thread of its own, so that the phone's clock runs meanwhile.
class LineReader {
public:
    /// `arrived` runs on the reader's thread for each line and for the end of the input.
    explicit LineReader(std::function<void()> arrived);

    struct Line {
        std::string text;
        bool isEnd = false;
    };
    /// Returns the next line or the end, or `nullopt` if neither has arrived yet.
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
