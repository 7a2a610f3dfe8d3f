#pragma once

#include <optional>
#include <string>

namespace vorlane {

/// The inbox database as files: the database itself and the names that SQLite opens beside it. Used by the database
/// manager while no connection to the database is open.
class VLInboxDatabaseFile {
public:
    explicit VLInboxDatabaseFile(std::string path);

    const std::string& path() const { return path_; }
    /// Returns whether the path leads to anything.
    bool exists() const;

    /// Prepares the names for SQLite: creates the database file with mode 0600, sets that mode on an existing one
    /// without following a symbolic link, and moves aside whatever could block SQLite: a pipe, socket or device, a link
    /// to one of them, and any journal that is not a regular file.
    void prepare() const;

    /// Deletes the database file. Returns an error message, or "" on success.
    std::string remove() const;

    /// Puts the file `replacement` in the place of the database. The old file and its journals are kept with ".corrupt"
    /// appended to the path, the two copies before it with ".corrupt.1" and ".corrupt.2". Returns the path of the copy,
    /// or `nullopt` if the old file cannot be kept and stays in its place.
    std::optional<std::string> replaceWith(const std::string& replacement) const;

private:
    void makePrivate() const;

    // Fixed at construction.
    const std::string path_;
};

}  // namespace vorlane
