#include "Simulator/Service/Store/ServiceSchema.h"

#include <cstddef>
#include <iterator>
#include <string>

#include "Simulator/Service/Http/ServiceError.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"
#include "Simulator/Service/Store/SQLiteStatement.h"

namespace vorlane::service {
namespace {

// The statements that upgrade a database to the next version. A database's version is the number of statements it has
// run.
constexpr const char* kSteps[] = {
    R"(
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
)",
    R"(
CREATE TABLE placements (
    app_key TEXT NOT NULL, name TEXT NOT NULL, html TEXT, metadata JSON TEXT NOT NULL, phash TEXT,
    PRIMARY KEY (app_key, name)) WITHOUT ROWID;
)",
    R"(
CREATE TABLE regions (
    number INTEGER PRIMARY KEY AUTOINCREMENT, app_key TEXT NOT NULL, id TEXT NOT NULL, document JSON TEXT NOT NULL,
    UNIQUE (app_key, id));
CREATE TABLE geo_contents (
    app_key TEXT NOT NULL, segment_id TEXT NOT NULL, transition TEXT NOT NULL, message JSON TEXT NOT NULL,
    PRIMARY KEY (app_key, segment_id, transition)) WITHOUT ROWID;
CREATE TABLE beacon_contents (
    app_key TEXT NOT NULL, uuid TEXT NOT NULL, major TEXT NOT NULL, minor TEXT NOT NULL, message JSON TEXT NOT NULL,
    PRIMARY KEY (app_key, uuid, major, minor)) WITHOUT ROWID;
CREATE TABLE beacon_sessions (
    number INTEGER PRIMARY KEY AUTOINCREMENT, app_key TEXT NOT NULL, tracking_id TEXT NOT NULL,
    session_id TEXT NOT NULL, uuid TEXT NOT NULL, major TEXT NOT NULL, minor TEXT NOT NULL, start_time INTEGER,
    end_time INTEGER,
    UNIQUE (app_key, session_id));
CREATE TABLE beacon_summaries (
    number INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, app_key TEXT NOT NULL, tracking_id TEXT NOT NULL,
    session_id TEXT, timestamp INTEGER NOT NULL, beacons JSON TEXT NOT NULL);
)",
    R"(
CREATE TABLE campaigns (token TEXT PRIMARY KEY, document JSON TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE splits (
    number INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, tracking_id TEXT NOT NULL, campaign_token TEXT,
    push_text TEXT NOT NULL, opened_phash TEXT NOT NULL, phash TEXT UNIQUE, split_id JSON TEXT NOT NULL,
    cancelled REAL);
CREATE INDEX splits_of_campaigns ON splits (campaign_token);
CREATE TABLE cancellations (
    number INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, app_key TEXT NOT NULL, tracking_id TEXT NOT NULL,
    record JSON TEXT NOT NULL);
CREATE TABLE pushes (
    number INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, app_key TEXT NOT NULL, tracking_id TEXT NOT NULL,
    device_id TEXT NOT NULL, token TEXT NOT NULL, phash TEXT, payload JSON TEXT NOT NULL);
)",
    R"(
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
)"};

std::string firstText(SQLiteDatabase& database, const std::string& sql) {
    SQLiteStatement statement(database, sql);
    return statement.step() ? statement.text(0) : std::string();
}

/// Returns the version of the database. Throws ServiceError for a database of another program.
std::size_t stepsTaken(SQLiteDatabase& database) {
    const auto version = firstText(database, "PRAGMA user_version");
    for (std::size_t count = 1; count <= std::size(kSteps); ++count) {
        if (version == std::to_string(count)) return count;
    }
    if (version != "0" || firstText(database, "SELECT count(*) FROM sqlite_schema") != "0")
        throw ServiceError("the database belongs to another program");
    return 0;
}

}  // namespace

void prepareSchema(SQLiteDatabase& database) {
    const auto taken = stepsTaken(database);
    if (taken == std::size(kSteps)) return;
    database.inTransaction([&database, taken] {
        for (auto step = taken; step < std::size(kSteps); ++step) database.execute(kSteps[step]);
        database.execute("PRAGMA user_version = " + std::to_string(std::size(kSteps)));
    });
}

}  // namespace vorlane::service
