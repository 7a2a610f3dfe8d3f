#include "Inbox/VLInboxStatement.h"

#include <sqlite3.h>

#include <cmath>

#include "Inbox/VLInboxConnection.h"

namespace vorlane {

namespace {

/// Returns whether a double and a 64-bit integer both hold the number exactly.
bool isWholeNumber(double value) {
    constexpr double kLimit = 9007199254740992.0;
    return std::abs(value) <= kLimit && std::trunc(value) == value;
}

}  // namespace

VLInboxStatement::VLInboxStatement(VLInboxConnection& connection, const char* sql) : connection_(connection) {
    if (!connection.isOpen()) return;
    connection.noted(sqlite3_prepare_v2(connection.handle(), sql, -1, &statement_, nullptr));
}

VLInboxStatement::~VLInboxStatement() { sqlite3_finalize(statement_); }

VLInboxStatement& VLInboxStatement::bind(std::int64_t value) {
    sqlite3_bind_int64(statement_, nextParameter(), value);
    return *this;
}

VLInboxStatement& VLInboxStatement::bindId(std::uint64_t value) { return bind(static_cast<std::int64_t>(value)); }

VLInboxStatement& VLInboxStatement::bind(const std::string& text) {
    sqlite3_bind_text64(statement_, nextParameter(), text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
    return *this;
}

VLInboxStatement& VLInboxStatement::bind(const std::optional<std::string>& text) {
    if (text) return bind(*text);
    sqlite3_bind_null(statement_, nextParameter());
    return *this;
}

VLInboxStatement& VLInboxStatement::bind(const std::optional<std::int64_t>& value) {
    if (value) return bind(*value);
    sqlite3_bind_null(statement_, nextParameter());
    return *this;
}

VLInboxStatement& VLInboxStatement::bind(const std::optional<double>& value) {
    if (value && isWholeNumber(*value)) return bind(static_cast<std::int64_t>(*value));
    const int parameter = nextParameter();
    if (value) {
        sqlite3_bind_double(statement_, parameter, *value);
    } else {
        sqlite3_bind_null(statement_, parameter);
    }
    return *this;
}

VLInboxStatement& VLInboxStatement::bind(const Data& data) {
    sqlite3_bind_blob64(statement_, nextParameter(), data.data(), data.size(), SQLITE_STATIC);
    return *this;
}

VLInboxStatement& VLInboxStatement::bindColumn(const VLInboxStatement& row, int column) {
    sqlite3_bind_value(statement_, nextParameter(), sqlite3_column_value(row.statement_, column));
    return *this;
}

int VLInboxStatement::step() { return connection_.noted(sqlite3_step(statement_)); }

std::int64_t VLInboxStatement::integer(int column) const { return sqlite3_column_int64(statement_, column); }

double VLInboxStatement::number(int column) const { return sqlite3_column_double(statement_, column); }

bool VLInboxStatement::isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }

std::optional<std::string> VLInboxStatement::text(int column) const {
    const auto* bytes = static_cast<const char*>(static_cast<const void*>(sqlite3_column_text(statement_, column)));
    if (!bytes) return std::nullopt;
    return std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

std::optional<Data> VLInboxStatement::data(int column) const {
    if (isNull(column)) return std::nullopt;
    const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
    return Data(bytes, bytes + sqlite3_column_bytes(statement_, column));
}

}  // namespace vorlane
