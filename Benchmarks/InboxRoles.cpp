#include "Benchmarks/InboxRoles.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "Benchmarks/Support/BareSender.h"
#include "Benchmarks/Support/Host.h"
#include "Benchmarks/Support/LoopbackServer.h"
#include "Benchmarks/Support/Process.h"
#include "Inbox/VLInboxDatabaseManager.h"
#include "Inbox/VLInboxRows.h"
#include "Inbox/VLInboxStore.h"
#include "Public/Vorlane.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::benchmarks {

namespace {

constexpr int kListed = 10'000;
constexpr int kSynchronised = 500;
constexpr std::size_t kTextLength = 4096;
constexpr double kExpiry = 4'000'000'000.0;
constexpr const char* kTrackingId = "anna";
constexpr const char* kStatePart = "mailbox?";
constexpr const char* kMessagePart = "mailbox/messages/";
constexpr const char* kInsert =
    "INSERT INTO RICH_INBOX (subject, content, label, url, notif_id, phash, read, created, end, card_url, "
    "background_color, foreground_color, metadata, tracking_id) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr const char* kSelect =
    "SELECT ID, SUBJECT, CONTENT, LABEL, URL, NOTIF_ID, PHASH, READ, CREATED, END, CARD_URL, BACKGROUND_COLOR, "
    "FOREGROUND_COLOR, METADATA FROM RICH_INBOX WHERE TRACKING_ID = ? ORDER BY CREATED DESC, NOTIF_ID DESC";

/// Returns a page with character references and percent-encoded parts.
const std::string& page() {
    static const std::string text = [] {
        std::string result = "<!DOCTYPE html><title>News</title>";
        while (result.size() < kTextLength) {
            result +=
                "<p>Running shoes, made for long ways &amp; bad weather, are back in all sizes.%20They weigh less than "
                "they look, keep out the rain, and last for more than a thousand kilometres on any road.</p>";
        }
        return result.substr(0, kTextLength);
    }();
    return text;
}

Dictionary answerOfMessage() {
    return {{"sline", "Shoes"},
            {"content", page()},
            {"blbl", "Buy"},
            {"burl", "https://shop.example/shoes"},
            {"phash", "0123456789abcdef"},
            {"read", 0},
            {"created", 1'700'000'000},
            {"end", kExpiry},
            {"bg_color", "#112233"},
            {"fg_color", "#ddeeff"},
            {"meta_data", Dictionary{{"campaign", "autumn"}}}};
}

Answers answersOfMailbox() {
    Array elements;
    for (int id = 1; id <= kSynchronised; ++id) elements.emplace_back(Dictionary{{"id", id}, {"read", 0}});
    const Value state(Dictionary{{"synchronisation_complete", true}, {"notification", Value(std::move(elements))}});
    return {{kStatePart, state.dump()}, {kMessagePart, Value(answerOfMessage()).dump()}};
}

void check(int result, int expected) {
    if (result != expected) throw std::runtime_error(sqlite3_errstr(result));
}

/// A connection of its own to the library's database.
class BareDatabase {
public:
    BareDatabase() { check(sqlite3_open(VLInboxDatabaseManager::databaseV2PlusPath().c_str(), &database_), SQLITE_OK); }
    ~BareDatabase() { sqlite3_close(database_); }
    BareDatabase(const BareDatabase&) = delete;
    BareDatabase& operator=(const BareDatabase&) = delete;

    void execute(const char* sql) { check(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr), SQLITE_OK); }

    void insert(int id) {
        sqlite3_stmt* statement = prepare(kInsert);
        int column = 0;
        const auto text = [&](const std::string& value) {
            sqlite3_bind_text(statement, ++column, value.c_str(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
        };
        text("Shoes");
        text(page());
        text("Buy");
        text("https://shop.example/shoes");
        sqlite3_bind_int64(statement, ++column, id);
        text("0123456789abcdef");
        sqlite3_bind_int64(statement, ++column, 0);
        sqlite3_bind_double(statement, ++column, 1'700'000'000.0 + id);
        sqlite3_bind_double(statement, ++column, kExpiry);
        sqlite3_bind_null(statement, ++column);
        text("#112233");
        text("#ddeeff");
        text(R"({"campaign":"autumn"})");
        text(kTrackingId);
        const int result = sqlite3_step(statement);
        sqlite3_finalize(statement);
        check(result, SQLITE_DONE);
    }

    /// Reads every column of every row, and returns the sum of their bytes.
    std::size_t selectAll() {
        sqlite3_stmt* statement = prepare(kSelect);
        sqlite3_bind_text(statement, 1, kTrackingId, -1, SQLITE_STATIC);
        std::size_t bytes = 0;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                if (sqlite3_column_text(statement, column))
                    bytes += static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
            }
        }
        sqlite3_finalize(statement);
        return bytes;
    }

private:
    sqlite3_stmt* prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        check(sqlite3_prepare_v2(database_, sql, -1, &statement, nullptr), SQLITE_OK);
        return statement;
    }

    sqlite3* database_ = nullptr;
};

/// Creates the database with `count` messages.
void makeMailbox(int count) {
    VLInboxDatabaseManager().performSchemaUpgradeDowngrade();
    BareDatabase database;
    database.execute("BEGIN");
    for (int id = 1; id <= count; ++id) database.insert(id);
    database.execute("COMMIT");
}

VLInboxRows readList() {
    VLInboxStore store(std::make_shared<VLInboxDatabaseManager>(), {});
    const double now = Platform::current().clock().now();
    const auto rows = store.list(kTrackingId, now).rows;
    if (!rows || rows->size() != static_cast<std::size_t>(kListed)) throw std::runtime_error("the list is not whole");
    return visibleRows(*rows, now);
}

std::size_t textOf(const VLInboxRows& messages) {
    std::size_t bytes = 0;
    for (const auto& message : messages) {
        for (const auto* text : {&message->subject(), &message->htmlContent(), &message->label(), &message->url(),
                                 &message->phash(), &message->cardImage()}) {
            bytes += text->value_or("").size();
        }
    }
    return bytes;
}

/// Requests the list, and runs the main queue until a handler has received that many messages.
void requestList(LinuxPlatform& platform, int count) {
    constexpr TimeInterval kLongEnough = 60;
    bool isWhole = false;
    Vorlane::getInboxMessagesWithCompletionHandler([&](const auto& messages, std::size_t /*unreadCount*/) {
        if (isWhole || messages.size() != static_cast<std::size_t>(count)) return;
        isWhole = true;
        platform.stopRunning();
    });
    platform.runFor(kLongEnough);
    if (!isWhole) throw std::runtime_error("the list did not arrive");
}

/// An application that has received its list once.
class AppWithInbox {
public:
    AppWithInbox() : platform_(installOfflinePlatform(folder_.path())) {
        makeMailbox(kListed);
        startLibrary();
        Vorlane::setTrackingId(kTrackingId);
        requestList(*platform_, kListed);
        while (platform_->poll() > 0) continue;
    }
    ~AppWithInbox() { Platform::shutdown(); }
    AppWithInbox(const AppWithInbox&) = delete;
    AppWithInbox& operator=(const AppWithInbox&) = delete;

    LinuxPlatform& platform() { return *platform_; }

private:
    const TemporaryFolder folder_;
    const std::shared_ptr<LinuxPlatform> platform_;
};

}  // namespace

double inboxList() {
    const TemporaryFolder folder;
    installOfflinePlatform(folder.path());
    makeMailbox(kListed);
    readList();
    VLInboxRows list;
    return secondsOf([&list] { list = readList(); });
}

double bareInboxList() {
    const TemporaryFolder folder;
    installOfflinePlatform(folder.path());
    makeMailbox(kListed);
    BareDatabase().selectAll();
    std::size_t bytes = 0;
    const auto seconds = secondsOf([&bytes] { bytes = BareDatabase().selectAll(); });
    if (bytes < kListed * kTextLength) throw std::runtime_error("the list is not whole");
    return seconds;
}

double inboxListRequest() {
    AppWithInbox app;
    return secondsOf([&app] { requestList(app.platform(), kListed); });
}

double inboxMainThread() {
    constexpr int kRequests = 10;
    AppWithInbox app;
    double sum = 0;
    for (int i = 0; i < kRequests; ++i) {
        bool hasList = false;
        double start = threadTime();
        Vorlane::getInboxMessagesWithCompletionHandler([&](const auto& /*messages*/, std::size_t /*unreadCount*/) {
            hasList = true;
            sum += threadTime() - start;
        });
        sum += threadTime() - start;
        // The host's waiting does not count.
        while (!hasList) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            start = threadTime();
            app.platform().poll();
        }
    }
    return sum / kRequests;
}

double inboxListMemory() {
    const TemporaryFolder folder;
    installOfflinePlatform(folder.path());
    makeMailbox(kListed);
    const auto before = startPeakMemory();
    const auto list = readList();
    return static_cast<double>(peakMemory() - before) / static_cast<double>(textOf(list));
}

double inboxSynchronisation() {
    const TemporaryFolder folder;
    LoopbackServer server(answersOfMailbox());
    server.expect(1);
    const auto platform = installLinuxPlatform(folder.path(), server.origin());
    startLibrary();
    server.wait();  // the configuration
    const auto seconds = secondsOf([&platform] { requestList(*platform, kSynchronised); });
    Platform::shutdown();
    return seconds;
}

double bareInboxSynchronisation() {
    const TemporaryFolder folder;
    const LoopbackServer server(answersOfMailbox());
    installOfflinePlatform(folder.path());
    makeMailbox(0);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    return secondsOf([&server] {
        BareSender(server.origin() + "/app/anna/rich/" + kStatePart + "stateHash=x").send({}, 1);
        BareSender(server.origin() + "/app/anna/rich/" + kMessagePart + "1").send({}, kSynchronised);
        for (int id = 1; id <= kSynchronised; ++id) BareDatabase().insert(id);
    });
}

}  // namespace vorlane::benchmarks
