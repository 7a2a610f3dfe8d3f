#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>

#include <array>

#include "Tests/Simulator/PhoneProgramTest.h"

namespace vorlane {

namespace {

class PhoneProgramStreamsTest : public PhoneProgramTest {
protected:
    std::vector<std::string> command() const {
        return {VORLANE_PHONE, "--data-dir", path("streams"), "--service", server.origin(), "--clock", "virtual"};
    }
};

Dictionary parsed(const std::string& line) { return Value::parse(line).get<Dictionary>(); }

TEST_F(PhoneProgramStreamsTest, LogLinesPrecedeTheReplyOfTheirCommand) {
    support::ChildProcess process(command());
    constexpr int kLines = 200;
    for (int i = 0; i < kLines; ++i) {
        process.writeLine(R"({"do":"log","message":"line","level":1,"payload":)" + std::to_string(i) + R"(,"id":)" +
                          std::to_string(i) + "}");
    }
    for (int i = 0; i < kLines; ++i) {
        const auto log = parsed(process.readLine().value());
        ASSERT_EQ(log, (Dictionary{{"event", "log"}, {"level", 1}, {"message", "line"}, {"payload", i}}));
        ASSERT_EQ(parsed(process.readLine().value()), (Dictionary{{"reply", i}, {"value", nullptr}}));
    }
}

TEST_F(PhoneProgramStreamsTest, LinesMayEndWithCarriageReturnOrEndOfInput) {
    support::ChildProcess process(
        {"/bin/sh", "-c",
         R"(printf '{"do":"query","what":"time"}\r\n{"do":"query","what":"time","id":2}' | )" + command()[0] +
             " --data-dir " + path("ends") + " --clock virtual=7"});
    EXPECT_EQ(parsed(process.readLine().value()), (Dictionary{{"reply", nullptr}, {"value", 7.0}}));
    EXPECT_EQ(parsed(process.readLine().value()), (Dictionary{{"reply", 2}, {"value", 7.0}}));
    EXPECT_EQ(process.readLine(), std::nullopt);
    EXPECT_EQ(process.wait(), 0);
}

TEST_F(PhoneProgramStreamsTest, ClosedOutputEndsItWithStatus0) {
    const auto program = command()[0] + " --data-dir " + path("unread");
    support::ChildProcess process({"/bin/bash", "-c", program + " | head -n 1; exit ${PIPESTATUS[0]}"});
    // The input stays open: the program ends with its first reply after its reader has gone.
    while (process.writeLine(R"({"do":"query","what":"time"})")) {
    }
    EXPECT_TRUE(process.readLine());
    EXPECT_EQ(process.readLine(), std::nullopt);
    EXPECT_EQ(process.wait(), 0);
}

TEST_F(PhoneProgramStreamsTest, AcceptsALineOfManyMegabytes) {
    const std::string text(8'000'000, 'a');
    const auto value = phone->perform({{"do", "helper"}, {"name", "vl_md5"}, {"args", Array{text}}});
    EXPECT_EQ(value.get<std::string>().size(), 32U);
}

TEST_F(PhoneProgramStreamsTest, StringsOfEveryKindAreEchoedUnchanged) {
    const std::string text = std::string("\0\x01\n\r\"\\/", 7) + "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\x7f";
    phone->call("setPhash:", {text});
    EXPECT_EQ(phone->call("phash"), Value(text));
    const auto answer = phone->answerToText(R"({"do":"query","what":"time","id":"\ud83d\ude00\u0000"})");
    EXPECT_EQ(answer.at("reply"), Value(std::string("\xf0\x9f\x98\x80\0", 5)));
}

TEST_F(PhoneProgramStreamsTest, AcceptsNestingUpToTheLimit) {
    const auto nested = [](int depth) {
        return R"({"do":"query","what":"time","id":)" + std::string(static_cast<std::size_t>(depth), '[') +
               std::string(static_cast<std::size_t>(depth), ']') + "}";
    };
    EXPECT_TRUE(phone->answerToText(nested(500)).contains("value"));
    const auto refused = phone->answerToText(nested(600));
    EXPECT_EQ(refused.at("reply"), Value());
    EXPECT_TRUE(refused.contains("error"));
}

/// A program with non-blocking standard input and output.
class NonBlockingProgram {
public:
    explicit NonBlockingProgram(const std::vector<std::string>& arguments) {
        std::array<int, 2> input{};
        std::array<int, 2> output{};
        if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) return;
        fcntl(input[0], F_SETFL, O_NONBLOCK);
        fcntl(output[1], F_SETFL, O_NONBLOCK);
        fcntl(output[1], F_SETPIPE_SZ, 4096);
        std::vector<char*> argv;
        for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        process_ = fork();
        if (process_ == 0) {
            dup2(input[0], STDIN_FILENO);
            dup2(output[1], STDOUT_FILENO);
            execv(argv[0], argv.data());
            _exit(127);
        }
        ::close(input[0]);
        ::close(output[1]);
        input_ = input[1];
        output_ = output[0];
    }
    ~NonBlockingProgram() {
        closeInput();
        ::close(output_);
    }
    NonBlockingProgram(const NonBlockingProgram&) = delete;
    NonBlockingProgram& operator=(const NonBlockingProgram&) = delete;

    bool write(const std::string& text) const {
        return ::write(input_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }
    void closeInput() {
        if (input_ >= 0) ::close(std::exchange(input_, -1));
    }
    /// Returns the output up to its end.
    std::string readAll() const {
        std::string text;
        std::array<char, 65536> chunk{};
        while (true) {
            const auto count = ::read(output_, chunk.data(), chunk.size());
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return text;
            text.append(chunk.data(), static_cast<std::size_t>(count));
        }
    }
    int wait() const {
        int status = -1;
        waitpid(process_, &status, 0);
        return status;
    }

private:
    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
};

TEST_F(PhoneProgramStreamsTest, WaitsForNonBlockingStreams) {
    NonBlockingProgram program(command());
    // More replies than the pipe holds.
    constexpr int kLines = 100;
    for (int i = 0; i < kLines; ++i) ASSERT_TRUE(program.write("{\"do\":\"query\",\"what\":\"constants\"}\n"));
    program.closeInput();
    const auto text = program.readAll();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), kLines);
    EXPECT_EQ(program.wait(), 0);
}

}  // namespace

}  // namespace vorlane
