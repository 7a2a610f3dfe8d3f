#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

/// A body that an honest server does not send.
struct HostileBody {
    std::string name;
    std::optional<Data> bytes;
};

/// `core` between repetitions of `open` and `close`.
inline std::string nestedJSON(int levels, const std::string& open, const std::string& core, const std::string& close) {
    std::string text;
    for (int i = 0; i < levels; ++i) text += open;
    text += core;
    for (int i = 0; i < levels; ++i) text += close;
    return text;
}

/// Smaller under ThreadSanitizer, where each byte costs a hundred times as much.
#ifdef __SANITIZE_THREAD__
inline constexpr std::size_t kHugeBody = std::size_t{4} << 20;
#else
inline constexpr std::size_t kHugeBody = std::size_t{40} << 20;
#endif

/// Bodies that are not a JSON object.
inline std::vector<HostileBody> bodiesThatAreNoObject() {
    const auto data = [](const std::string& text) { return std::optional<Data>(Data(text.begin(), text.end())); };
    return {{"nothing", std::nullopt},
            {"empty", Data()},
            {"not JSON", data("<html>")},
            {"an array", data("[1,2]")},
            {"a number", data("42")},
            {"null", data("null")},
            {"a string", data("\"value\"")},
            {"cut off", data(R"({"value":"a)")},
            {"two objects", data("{}{}")},
            {"arrays 100,000 deep", data(nestedJSON(100'000, "[", "", "]"))},
            {"objects 100,000 deep", data(nestedJSON(100'000, R"({"value":)", "1", "}"))},
            {"invalid UTF-8", data("{\"value\":\"\xff\xfe\"}")},
            {"a NUL byte behind the object", data(std::string("{\"value\":\"a\"}\0", 14))},
            {"a NUL byte in a string", data(std::string("{\"value\":\"a\0b\"}", 15))},
            {"megabytes of blanks", Data(kHugeBody, ' ')}};
}

}  // namespace vorlane
