#include "Simulator/Service/Store/SQLiteStatement.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <string_view>

#include "Simulator/Service/Http/ServiceError.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"

namespace vorlane::service {

SQLiteStatement::SQLiteStatement(SQLiteDatabase& database, const std::string& sql) : database_(database) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(database.handle(), sql.c_str(), -1, &statement, nullptr));
    statement_.reset(statement);
}

bool SQLiteStatement::step() {
    const int status = sqlite3_step(statement_.get());
    if (status != SQLITE_DONE && status != SQLITE_ROW) check(status);
    return status == SQLITE_ROW;
}

void SQLiteStatement::run() {
    while (step()) continue;
}

Dictionary SQLiteStatement::row() const {
    Dictionary row;
    for (int column = 0; column < sqlite3_column_count(statement_.get()); ++column)
        row.emplace(sqlite3_column_name(statement_.get(), column), value(column));
    return row;
}

Array SQLiteStatement::rows() {
    Array rows;
    while (step()) rows.emplace_back(row());
    return rows;
}

std::string SQLiteStatement::text(int column) const {
    const auto* characters = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
    return characters ? std::string(characters, length) : std::string();
}

std::int64_t SQLiteStatement::integer(int column) const { return sqlite3_column_int64(statement_.get(), column); }

void SQLiteStatement::bindNext(const std::string& text) {
    check(sqlite3_bind_text64(statement_.get(), ++bound_, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void SQLiteStatement::bindNext(const std::optional<std::string>& text) {
    if (text) return bindNext(*text);
    check(sqlite3_bind_null(statement_.get(), ++bound_));
}

void SQLiteStatement::bindNext(const std::optional<std::int64_t>& number) {
    ++bound_;
    check(number ? sqlite3_bind_int64(statement_.get(), bound_, *number) : sqlite3_bind_null(statement_.get(), bound_));
}

void SQLiteStatement::bindNext(double number) { check(sqlite3_bind_double(statement_.get(), ++bound_, number)); }

void SQLiteStatement::check(int status) const {
    if (status == SQLITE_OK) return;
    throw ServiceError(fmt::format("database error: {}", sqlite3_errmsg(database_.handle())));
}

Value SQLiteStatement::value(int column) const {
    const int type = sqlite3_column_type(statement_.get(), column);
    if (type == SQLITE_NULL) return nullptr;
    const char* declared = sqlite3_column_decltype(statement_.get(), column);
    const std::string_view declaredType = declared ? declared : "";
    if (declaredType == "JSON TEXT") return Value::parse(text(column), nullptr, false);
    if (declaredType == "BOOLEAN") return sqlite3_column_int64(statement_.get(), column) != 0;
    if (type == SQLITE_INTEGER) return sqlite3_column_int64(statement_.get(), column);
    if (type == SQLITE_FLOAT) return sqlite3_column_double(statement_.get(), column);
    return text(column);
}

void SQLiteStatement::Finalizer::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

}  // namespace vorlane::service
