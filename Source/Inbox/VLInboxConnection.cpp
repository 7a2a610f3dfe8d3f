#include "Inbox/VLInboxConnection.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace vorlane {

namespace {

/// How long a statement waits for another program that holds the file.
constexpr int kBusyTimeoutMilliseconds = 250;

// The header of a database file.
constexpr std::size_t kHeaderLength = 28;
constexpr std::string_view kMagic{"SQLite format 3\0", 16};
constexpr std::size_t kWriteVersion = 18;
constexpr std::size_t kReadVersion = 19;
constexpr std::size_t kChangeCounter = 24;
/// In the other journal modes the counter does not tell of every change.
constexpr std::uint8_t kRollbackJournal = 1;

using Header = std::array<std::uint8_t, kHeaderLength>;

bool isCountingHeader(const Header& header) {
    return std::equal(kMagic.begin(), kMagic.end(), header.begin(),
                      [](char left, std::uint8_t right) { return static_cast<std::uint8_t>(left) == right; }) &&
           header[kWriteVersion] == kRollbackJournal && header[kReadVersion] == kRollbackJournal;
}

std::uint32_t changeCounter(const Header& header) {
    std::uint32_t counter = 0;
    for (std::size_t i = 0; i < sizeof counter; ++i) counter = counter << 8U | header[kChangeCounter + i];
    return counter;
}

/// Read through SQLite's own file: closing another descriptor of it would drop the locks that this process holds.
bool readHeader(sqlite3* database, Header& header) {
    sqlite3_file* file = nullptr;
    if (sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file)) != SQLITE_OK) {
        return false;
    }
    return file && file->pMethods &&
           file->pMethods->xRead(file, header.data(), static_cast<int>(header.size()), 0) == SQLITE_OK;
}

}  // namespace

VLInboxConnection::VLInboxConnection(const std::string& path) {
    openResult_ = noted(sqlite3_open(path.c_str(), &database_));
    if (isOpen()) sqlite3_busy_timeout(database_, kBusyTimeoutMilliseconds);
}

VLInboxConnection::~VLInboxConnection() {
    // Unlike close(), this cannot fail: what is still in use goes with its last statement.
    sqlite3_close_v2(database_);
}

VLInboxConnection::VLInboxConnection(VLInboxConnection&& other) noexcept
    : database_(std::exchange(other.database_, nullptr)),
      openResult_(other.openResult_),
      isCorrupt_(other.isCorrupt_) {}

VLInboxConnection& VLInboxConnection::operator=(VLInboxConnection&& other) noexcept {
    std::swap(database_, other.database_);
    std::swap(openResult_, other.openResult_);
    std::swap(isCorrupt_, other.isCorrupt_);
    return *this;
}

std::string VLInboxConnection::execute(const char* sql) {
    char* text = nullptr;
    const int result = noted(sqlite3_exec(database_, sql, nullptr, nullptr, &text));
    std::string message = text ? text : "";
    sqlite3_free(text);
    if (result != SQLITE_OK && message.empty()) message = sqlite3_errstr(result);
    return message;
}

int VLInboxConnection::close() {
    const int result = sqlite3_close(database_);
    if (result == SQLITE_OK) database_ = nullptr;
    return result;
}

int VLInboxConnection::errorCode() const { return database_ ? sqlite3_errcode(database_) : SQLITE_NOMEM; }

std::string VLInboxConnection::errorMessage() const {
    return database_ ? sqlite3_errmsg(database_) : sqlite3_errstr(SQLITE_NOMEM);
}

std::optional<VLInboxConnection::Stamp> VLInboxConnection::stamp() const {
    Header header{};
    struct stat status {};
    if (!isOpen() || !readHeader(database_, header) || !isCountingHeader(header)) return std::nullopt;
    if (::stat(sqlite3_db_filename(database_, "main"), &status) != 0) return std::nullopt;
    return Stamp{status.st_ino, changeCounter(header)};
}

int VLInboxConnection::noted(int result) {
    constexpr int kPrimaryCode = 0xFF;
    const int primary = result & kPrimaryCode;
    if (primary == SQLITE_NOTADB || primary == SQLITE_CORRUPT) isCorrupt_ = true;
    return primary;
}

}  // namespace vorlane
