#include "Simulator/Service/Store/SQLiteDatabase.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include "Simulator/Service/Http/ServiceError.h"

namespace vorlane::service {

SQLiteDatabase::SQLiteDatabase(const std::string& path) {
    sqlite3* handle = nullptr;
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int status = sqlite3_open_v2(path.c_str(), &handle, kFlags, nullptr);
    // Even a database that could not be opened has a handle, which must be closed.
    handle_.reset(handle);
    if (status != SQLITE_OK) {
        throw ServiceError(fmt::format("cannot open the database {}: {}", path, sqlite3_errstr(status)));
    }
}

void SQLiteDatabase::execute(const std::string& sql) {
    if (sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return;
    throw ServiceError(fmt::format("the database rejected \"{}\": {}", sql, sqlite3_errmsg(handle())));
}

void SQLiteDatabase::rollBack() noexcept { sqlite3_exec(handle(), "ROLLBACK", nullptr, nullptr, nullptr); }

void SQLiteDatabase::Closer::operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }

}  // namespace vorlane::service
