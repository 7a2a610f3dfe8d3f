#include "Platform/Linux/Device/LinuxOSLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "Public/VLValue.h"
#include "Simulator/Support/ChildProcess.h"

namespace vorlane {
namespace {

using testing::ElementsAre;

TEST(LinuxOSLogTest, EntryHasMessageSourceAndPriority) {
    const LinuxOSLog log("program", "vorlane.sdk", "VL");
    EXPECT_THAT(log.fields(OSLogType::Error, "text"),
                ElementsAre("MESSAGE=text", "PRIORITY=3", "SYSLOG_IDENTIFIER=program", "VORLANE_SUBSYSTEM=vorlane.sdk",
                            "VORLANE_CATEGORY=VL"));
}

TEST(LinuxOSLogTest, EachTypeHasItsPriority) {
    const LinuxOSLog log("program", "vorlane.sdk", "VL");
    EXPECT_EQ(log.fields(OSLogType::DefaultType, "text")[1], "PRIORITY=4");
    EXPECT_EQ(log.fields(OSLogType::Info, "text")[1], "PRIORITY=6");
    EXPECT_EQ(log.fields(OSLogType::Debug, "text")[1], "PRIORITY=7");
    EXPECT_EQ(log.fields(static_cast<OSLogType>(99), "text")[1], "PRIORITY=4");
}

TEST(LinuxOSLogTest, LinesMayHoldAnyBytes) {
    const LinuxOSLog log("program", "vorlane.sdk", "VL");
    const std::string text("two\nlines = \0 %s \xff", 19);
    EXPECT_EQ(log.fields(OSLogType::Info, text)[0], "MESSAGE=" + text);
}

/// Starts a journal of its own in a private mount namespace, has the host write to it, and prints what it holds.
constexpr const char* kJournalScript = R"(
    mount -t tmpfs tmpfs /run && mkdir -p /run/systemd/journal /run/log/journal || exit 77
    /lib/systemd/systemd-journald >/dev/null 2>&1 &
    journal=$!
    tries=0
    until [ -S /run/systemd/journal/socket ] || [ $tries -ge 1000000 ]; do tries=$((tries+1)); done
    "$1" journal "$2"
    journalctl --sync
    journalctl -D /run/log/journal -o json VORLANE_CATEGORY=VL
    kill $journal
    wait $journal
    exit 0
)";

bool canRunJournal() {
    if (!std::filesystem::exists("/lib/systemd/systemd-journald")) return false;
    return support::ChildProcess({"unshare", "-m", "sh", "-c", "mount -t tmpfs tmpfs /run"}).wait() == 0;
}

// Without a journal, the host's lines must be dropped silently instead.
TEST(LinuxOSLogTest, JournalReceivesTheLines) {
    if (!canRunJournal()) {
        EXPECT_EQ(support::ChildProcess({VORLANE_HOST_PROGRAM, "journal", "text"}).wait(), 0);
        return;
    }
    support::ChildProcess journal(
        {"unshare", "-m", "sh", "-c", kJournalScript, "sh", VORLANE_HOST_PROGRAM, "a line\nand more"});
    std::istringstream lines(journal.readRest());
    std::vector<std::string> priorities;
    for (std::string line; std::getline(lines, line);) {
        const Value entry = Value::parse(line);
        EXPECT_EQ(entry.at("MESSAGE"), "a line\nand more");
        EXPECT_EQ(entry.at("SYSLOG_IDENTIFIER"), "vorlane_host_program");
        EXPECT_EQ(entry.at("VORLANE_SUBSYSTEM"), "vorlane.sdk");
        EXPECT_EQ(entry.at("VORLANE_CATEGORY"), "VL");
        EXPECT_FALSE(entry.contains("CODE_FILE"));
        priorities.push_back(entry.at("PRIORITY").get<std::string>());
    }
    EXPECT_THAT(priorities, ElementsAre("3", "4", "6", "7"));
}

}  // namespace
}  // namespace vorlane
