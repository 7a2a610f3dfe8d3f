#pragma once

#include <array>
#include <string>
#include <string_view>

namespace vorlane {

/// A table of the inbox database.
struct VLInboxTable {
    std::string_view name;
    /// The statement that creates the table.
    const char* statement;

    /// The statement as SQLite stores it in the file.
    std::string definition() const {
        constexpr std::string_view kCondition = "IF NOT EXISTS ";
        std::string text = statement;
        if (const auto place = text.find(kCondition); place != std::string::npos) text.erase(place, kCondition.size());
        return text;
    }
};

inline constexpr VLInboxTable kInboxTable{
    "RICH_INBOX",
    "CREATE TABLE IF NOT EXISTS RICH_INBOX(ID INTEGER PRIMARY KEY AUTOINCREMENT,     TRACKING_ID TEXT, "
    "NOTIF_ID INTEGER, SUBJECT TEXT, CONTENT TEXT, LABEL TEXT, URL TEXT, PHASH TEXT, READ INTEGER,     "
    "CREATED INTEGER, END INTEGER, CARD_URL TEXT, BACKGROUND_COLOR TEXT, FOREGROUND_COLOR TEXT, CARD_IMAGE BLOB, "
    "METADATA TEXT)"};
inline constexpr VLInboxTable kTrashTable{
    "RICH_TRASH", "CREATE TABLE IF NOT EXISTS RICH_TRASH(NOTIF_ID INTEGER PRIMARY KEY, TRACKING_ID TEXT)"};

/// Every table of a sound file. SQLite creates the last one for AUTOINCREMENT.
inline constexpr std::array kInboxTables{kInboxTable, kTrashTable,
                                         VLInboxTable{"sqlite_sequence", "CREATE TABLE sqlite_sequence(name,seq)"}};

}  // namespace vorlane
