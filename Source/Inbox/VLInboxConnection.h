#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct sqlite3;

namespace vorlane {

/// One connection to the inbox database, closed with the object. Created, used and destroyed by one operation on one
/// thread.
class VLInboxConnection {
public:
    /// Opens the file; SQLite creates it if it is missing. A failure shows in `isOpen()`, `errorCode()` and
    /// `errorMessage()`.
    explicit VLInboxConnection(const std::string& path);
    ~VLInboxConnection();
    VLInboxConnection(VLInboxConnection&& other) noexcept;
    VLInboxConnection& operator=(VLInboxConnection&& other) noexcept;

    bool isOpen() const { return openResult_ == 0 && database_ != nullptr; }
    /// Runs statements that return no rows. Returns SQLite's message on failure, and "" on success.
    std::string execute(const char* sql);
    /// Closes the connection and returns SQLite's result. The connection stays open on failure.
    int close();

    /// SQLite's primary result code of the last call.
    int errorCode() const;
    std::string errorMessage() const;
    /// Returns whether SQLite has reported, to this connection or one of its statements, that the file is damaged or no
    /// database. Some errors of the device look like that, too.
    bool isCorrupt() const { return isCorrupt_; }

    /// The state of the file. It changes with every transaction that writes to the file, whoever commits it.
    struct Stamp {
        std::uint64_t file;
        std::uint32_t changeCounter;

        bool operator==(const Stamp&) const = default;
    };
    /// Returns `nullopt` if the header cannot be read or does not count every transaction.
    std::optional<Stamp> stamp() const;

    /// Reads the whole file. Returns false if any part of it cannot be read.
    bool isReadable() const;
    /// Returns whether the header has a format that SQLite does not know, so that it refuses to read or write the file,
    /// or a text encoding other than UTF-8.
    bool hasUnknownFormat() const;

    /// For statements on this connection. Null after `close()`, and if there was no memory to open the file.
    sqlite3* handle() const { return database_; }
    /// Records a result of SQLite and returns its primary code.
    int noted(int result);

private:
    sqlite3* database_ = nullptr;
    int openResult_ = 0;
    bool isCorrupt_ = false;
};

}  // namespace vorlane
