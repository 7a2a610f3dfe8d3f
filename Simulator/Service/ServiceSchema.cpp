#include "Simulator/Service/ServiceSchema.h"

#include <fmt/format.h>

#include <array>
#include <string>

#include "Simulator/Service/SQLiteDatabase.h"
#include "Simulator/Service/SQLiteStatement.h"
#include "Simulator/Service/ServiceError.h"

namespace vorlane::service {
namespace {

constexpr const char* kFirst = R"(
CREATE TABLE users (
    app_key TEXT NOT NULL, tracking_id TEXT NOT NULL,
    PRIMARY KEY (app_key, tracking_id)) WITHOUT ROWID;
CREATE TABLE devices (
    app_key TEXT NOT NULL, device_id TEXT NOT NULL, tracking_id TEXT NOT NULL, prev_tracking_id TEXT,
    time REAL NOT NULL, platform TEXT, device JSON TEXT, token TEXT, registered BOOLEAN NOT NULL DEFAULT 0,
    notification_settings JSON TEXT,
    PRIMARY KEY (app_key, device_id)) WITHOUT ROWID;
CREATE TABLE sessions (
    number INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, kind TEXT NOT NULL, app_key TEXT NOT NULL,
    tracking_id TEXT NOT NULL, device_id TEXT NOT NULL, sid TEXT, session_length INTEGER,
    average_session_length INTEGER, phash TEXT, prev_tracking_id TEXT, payload JSON TEXT NOT NULL);
CREATE TABLE events (
    number INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, app_key TEXT NOT NULL, tracking_id TEXT NOT NULL,
    device_id TEXT, sid TEXT, type TEXT NOT NULL, label JSON TEXT NOT NULL, phash TEXT, payload JSON TEXT NOT NULL);
CREATE TABLE tags (
    app_key TEXT NOT NULL, tracking_id TEXT NOT NULL, name TEXT NOT NULL, type TEXT NOT NULL, value TEXT NOT NULL,
    PRIMARY KEY (app_key, tracking_id, name)) WITHOUT ROWID;
CREATE TABLE configurations (app_key TEXT PRIMARY KEY, document JSON TEXT NOT NULL) WITHOUT ROWID;
)";

constexpr const char* kMailboxes = R"(
CREATE TABLE message_ids (id INTEGER PRIMARY KEY);
CREATE TABLE messages (
    id INTEGER PRIMARY KEY, app_key TEXT NOT NULL, subject TEXT NOT NULL, html TEXT NOT NULL, label TEXT, link TEXT,
    phash TEXT NOT NULL, background_color TEXT, foreground_color TEXT, card_url TEXT, image TEXT, metadata JSON TEXT,
    created NUMERIC NOT NULL, expires NUMERIC NOT NULL);
CREATE TABLE mailboxes (
    app_key TEXT NOT NULL, tracking_id TEXT NOT NULL, message INTEGER NOT NULL, is_read BOOLEAN NOT NULL DEFAULT 0,
    is_deleted BOOLEAN NOT NULL DEFAULT 0,
    PRIMARY KEY (app_key, tracking_id, message)) WITHOUT ROWID;
CREATE INDEX mailboxes_by_message ON mailboxes (message);
CREATE TABLE card_images (name TEXT PRIMARY KEY, content_type TEXT NOT NULL, bytes BLOB NOT NULL) WITHOUT ROWID;
)";

/// What brings a database of each version, from 0 on, to the next.
constexpr std::array kSteps = {kFirst, kMailboxes};

std::string firstText(SQLiteDatabase& database, const std::string& sql) {
    SQLiteStatement statement(database, sql);
    return statement.step() ? statement.text(0) : std::string();
}

}  // namespace

void prepareSchema(SQLiteDatabase& database) {
    const auto version = std::stoull(firstText(database, "PRAGMA user_version"));
    if (version == kSteps.size()) return;
    const bool isEmpty = firstText(database, "SELECT count(*) FROM sqlite_schema") == "0";
    if (version > kSteps.size() || (version == 0 && !isEmpty))
        throw ServiceError("the database is not one of this service's");
    database.inTransaction([&database, version] {
        for (auto step = version; step < kSteps.size(); ++step) database.execute(kSteps.at(step));
        database.execute(fmt::format("PRAGMA user_version = {}", kSteps.size()));
    });
}

}  // namespace vorlane::service
