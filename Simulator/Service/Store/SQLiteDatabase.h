#pragma once

#include <memory>
#include <string>

struct sqlite3;

namespace vorlane::service {

/// An open SQLite database: a file, or ":memory:". One thread at a time. Every operation throws ServiceError on
/// failure.
class SQLiteDatabase {
public:
    explicit SQLiteDatabase(const std::string& path);

    /// Runs statements without parameters and without results.
    void execute(const std::string& sql);

    /// Runs `work` in a transaction.
    template <class Work>
    void inTransaction(Work work) {
        execute("BEGIN IMMEDIATE");
        try {
            work();
            execute("COMMIT");
        } catch (...) {
            rollBack();
            throw;
        }
    }

    sqlite3* handle() const { return handle_.get(); }

private:
    struct Closer {
        void operator()(sqlite3* handle) const;
    };

    void rollBack() noexcept;

    std::unique_ptr<sqlite3, Closer> handle_;
};

}  // namespace vorlane::service
