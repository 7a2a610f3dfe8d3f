#include "Inbox/VLInboxConnection.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace vorlane {

namespace {

/// The time for which a statement waits for a lock of another program.
constexpr int kBusyTimeoutMilliseconds = 250;

// The header of a database file.
constexpr std::size_t kHeaderLength = 60;
constexpr std::string_view kMagic{"SQLite format 3\0", 16};
constexpr std::size_t kWriteVersion = 18;
constexpr std::size_t kReadVersion = 19;
constexpr std::size_t kChangeCounter = 24;
constexpr std::size_t kSchemaFormat = 44;
constexpr std::size_t kTextEncoding = 56;
/// In the other journal modes the counter does not count every transaction.
constexpr std::uint8_t kRollbackJournal = 1;

using Header = std::array<std::uint8_t, kHeaderLength>;

bool hasMagic(const Header& header) {
    return std::equal(kMagic.begin(), kMagic.end(), header.begin(),
                      [](char left, std::uint8_t right) { return static_cast<std::uint8_t>(left) == right; });
}

bool isCountingHeader(const Header& header) {
    return hasMagic(header) && header[kWriteVersion] == kRollbackJournal && header[kReadVersion] == kRollbackJournal;
}

std::uint32_t numberAt(const Header& header, std::size_t place) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < sizeof number; ++i) number = number << 8U | header[place + i];
    return number;
}

/// SQLite's own file: closing another descriptor of it would drop the locks that this process holds.
sqlite3_file* fileOf(sqlite3* database) {
    sqlite3_file* file = nullptr;
    const int result = sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file));
    return result == SQLITE_OK && file && file->pMethods ? file : nullptr;
}

bool readHeader(sqlite3* database, Header& header) {
    auto* const file = fileOf(database);
    return file && file->pMethods->xRead(file, header.data(), static_cast<int>(header.size()), 0) == SQLITE_OK;
}

}  // namespace

VLInboxConnection::VLInboxConnection(const std::string& path) {
    openResult_ = noted(sqlite3_open(path.c_str(), &database_));
    if (isOpen()) sqlite3_busy_timeout(database_, kBusyTimeoutMilliseconds);
}

VLInboxConnection::~VLInboxConnection() {
    // Unlike close(), this cannot fail: SQLite keeps the connection until its last statement is finalized.
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
    return Stamp{status.st_ino, numberAt(header, kChangeCounter)};
}

bool VLInboxConnection::isReadable() const {
    constexpr sqlite3_int64 kBlock = 65'536;
    auto* const file = isOpen() ? fileOf(database_) : nullptr;
    sqlite3_int64 size = 0;
    if (!file || file->pMethods->xFileSize(file, &size) != SQLITE_OK) return false;
    std::vector<std::uint8_t> block(kBlock);
    for (sqlite3_int64 place = 0; place < size; place += kBlock) {
        const auto length = static_cast<int>(std::min(kBlock, size - place));
        if (file->pMethods->xRead(file, block.data(), length, place) != SQLITE_OK) return false;
    }
    return true;
}

bool VLInboxConnection::hasUnknownFormat() const {
    constexpr std::uint32_t kLastFileVersion = 2;
    constexpr std::uint32_t kLastSchemaFormat = 4;
    constexpr std::uint32_t kUTF8 = 1;
    Header header{};
    if (!isOpen() || !readHeader(database_, header) || !hasMagic(header)) return false;
    return header[kWriteVersion] > kLastFileVersion || header[kReadVersion] > kLastFileVersion ||
           numberAt(header, kSchemaFormat) > kLastSchemaFormat || numberAt(header, kTextEncoding) > kUTF8;
}

int VLInboxConnection::noted(int result) {
    constexpr int kPrimaryCode = 0xFF;
    const int primary = result & kPrimaryCode;
    if (primary == SQLITE_NOTADB || primary == SQLITE_CORRUPT) isCorrupt_ = true;
    return primary;
}

}  // namespace vorlane
