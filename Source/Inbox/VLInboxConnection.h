#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct sqlite3;

namespace vorlane {

/// One connection to the inbox database, closed when the object goes. Made, used and dropped by one operation on one
/// thread.
class VLInboxConnection {
public:
    /// Opens the file; SQLite makes it when missing. A failure shows in `isOpen()`, `errorCode()` and `errorMessage()`.
    explicit VLInboxConnection(const std::string& path);
    ~VLInboxConnection();
    VLInboxConnection(VLInboxConnection&& other) noexcept;
    VLInboxConnection& operator=(VLInboxConnection&& other) noexcept;

    bool isOpen() const { return openResult_ == 0 && database_ != nullptr; }
    /// Runs one statement that gives no rows; returns SQLite's message on failure, and "" on success.
    std::string execute(const char* sql);
    /// Closes it and returns SQLite's result. It stays open on failure.
    int close();

    /// SQLite's primary result code of the last call.
    int errorCode() const;
    std::string errorMessage() const;
    /// Whether the last failure, or one of this connection's statements, said that the file is no database or damaged.
    bool isCorrupt() const { return isCorrupt_; }

    /// The state of the file. It changes with every transaction that writes to the file, whoever commits it.
    struct Stamp {
        std::uint64_t file;
        std::uint32_t changeCounter;

        bool operator==(const Stamp&) const = default;
    };
    /// Nothing when it cannot be told.
    std::optional<Stamp> stamp() const;

    /// For statements on this connection. Null once closed, and when there was no memory to open one.
    sqlite3* handle() const { return database_; }
    /// Takes note of a result of SQLite's and returns it.
    int noted(int result);

private:
    sqlite3* database_ = nullptr;
    int openResult_ = 0;
    bool isCorrupt_ = false;
};

}  // namespace vorlane
