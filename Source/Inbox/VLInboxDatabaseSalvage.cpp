#include "Inbox/VLInboxDatabaseSalvage.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ios>
#include <string_view>
#include <system_error>
#include <utility>

#include "Inbox/VLInboxSchema.h"
#include "Inbox/VLInboxTableSalvage.h"

namespace vorlane {

namespace {

namespace fs = std::filesystem;

/// The header of a database file. Byte numbers are those of the file format's documentation.
using FileHeader = std::array<char, 100>;

constexpr std::string_view kFileMagic{"SQLite format 3\0", 16};
/// The reserved space, and the payload fractions, which are constants of the format.
constexpr std::string_view kFixedBytes{"\0\x40\x20\x20", 4};

struct Place {
    enum : std::size_t {
        PageSize = 16,
        WriteVersion = 18,
        ReadVersion = 19,
        FixedBytes = 20,
        EndOfChangeCounter = 27,
        SchemaFormat = 44,
        AutomaticVacuum = 52,
        TextEncoding = 56,
        EndOfVersionValidFor = 95,
    };
};

unsigned byteAt(const FileHeader& header, std::size_t place) { return static_cast<unsigned char>(header.at(place)); }

/// Sets a big-endian number of four bytes if it is out of range.
void limitNumber(FileHeader& header, std::size_t place, std::uint32_t most, std::uint32_t otherwise) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < sizeof number; ++i) number = number << 8U | byteAt(header, place + i);
    if (number >= 1 && number <= most) return;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        header.at(place + i) = static_cast<char>(otherwise >> (8U * (3 - i)) & 0xFFU);
    }
}

/// Replaces invalid values by those that every file of this library has.
void repairHeader(FileHeader& header) {
    kFileMagic.copy(header.data(), kFileMagic.size());
    const unsigned pageSize = byteAt(header, Place::PageSize) << 8U | byteAt(header, Place::PageSize + 1);
    if (pageSize != 1 && (pageSize < 512 || !std::has_single_bit(pageSize))) {
        header[Place::PageSize] = 0x10;
        header[Place::PageSize + 1] = 0;
    }
    for (const std::size_t version : {Place::WriteVersion, Place::ReadVersion}) {
        if (byteAt(header, version) < 1 || byteAt(header, version) > 2) header.at(version) = 1;
    }
    kFixedBytes.copy(&header[Place::FixedBytes], kFixedBytes.size());
    limitNumber(header, Place::SchemaFormat, 4, 4);
    limitNumber(header, Place::TextEncoding, 1, 1);
    std::fill_n(&header[Place::AutomaticVacuum], 4, '\0');
    // If this differs from the change counter, SQLite uses the length of the file and not the one in the header.
    header[Place::EndOfVersionValidFor] = static_cast<char>(~byteAt(header, Place::EndOfChangeCounter));
}

bool repairHeaderOfFile(const std::string& path) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    FileHeader header{};
    if (!file.read(header.data(), header.size())) return false;
    repairHeader(header);
    file.seekp(0);
    return static_cast<bool>(file.write(header.data(), header.size()).flush());
}

/// Takes effect with the next connection. Has no effect on a file whose first page cannot be read.
void repairDefinitions(const std::string& path) {
    VLInboxConnection connection(path);
    connection.execute("PRAGMA writable_schema=ON");
    for (const auto& table : kInboxTables) {
        const auto definition = table.definition();
        connection.execute(fmt::format("UPDATE sqlite_master SET type = 'table', name = '{0}', tbl_name = '{0}', "
                                       "sql = '{1}' WHERE length(CAST(sql AS BLOB)) = {2}",
                                       table.name, definition, definition.size())
                               .c_str());
    }
}

bool copyIfThere(const std::string& source, const std::string& destination) {
    std::error_code error;
    if (!fs::exists(source, error)) return !error;
    return fs::copy_file(source, destination, fs::copy_options::overwrite_existing, error);
}

}  // namespace

VLInboxDatabaseSalvage::VLInboxDatabaseSalvage(std::string path)
    : path_(std::move(path)), workPath_(path_ + ".salvage") {}

VLInboxDatabaseSalvage::~VLInboxDatabaseSalvage() {
    std::error_code ignored;
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) fs::remove(workPath_ + suffix, ignored);
}

std::optional<std::size_t> VLInboxDatabaseSalvage::copyRowsTo(VLInboxConnection& destination) {
    if (!makeWorkingCopy()) return std::nullopt;
    VLInboxConnection source(workPath_);
    if (!destination.execute("BEGIN IMMEDIATE").empty()) return std::nullopt;
    VLInboxTableSalvage inbox(source, destination, VLInboxTableSalvage::inboxTable());
    VLInboxTableSalvage trash(source, destination, VLInboxTableSalvage::trashTable());
    const bool isCopied = inbox.copyRows() && trash.copyRows() && destination.execute("COMMIT").empty();
    return isCopied ? std::optional(inbox.count() + trash.count()) : std::nullopt;
}

bool VLInboxDatabaseSalvage::makeWorkingCopy() const {
    if (!copyIfThere(path_, workPath_)) return false;
    // A transaction that a kill interrupted is then rolled back in the copy.
    if (!copyIfThere(path_ + "-journal", workPath_ + "-journal")) return false;
    if (!copyIfThere(path_ + "-wal", workPath_ + "-wal")) return false;
    // A file too short for a header has no rows.
    if (repairHeaderOfFile(workPath_)) repairDefinitions(workPath_);
    return true;
}

}  // namespace vorlane
