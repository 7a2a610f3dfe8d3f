#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"

struct sqlite3_stmt;

namespace vorlane {

class VLInboxConnection;

/// One prepared statement; finalized with the object, which must not outlive its connection.
class VLInboxStatement {
public:
    /// A failure shows in `isPrepared()`; the connection has the reason.
    VLInboxStatement(VLInboxConnection& connection, const char* sql);
    ~VLInboxStatement();
    VLInboxStatement(const VLInboxStatement&) = delete;
    VLInboxStatement& operator=(const VLInboxStatement&) = delete;

    bool isPrepared() const { return statement_ != nullptr; }

    /// Each call binds the next parameter; `nullopt` binds NULL. Strings and data must stay unchanged until the
    /// statement is destroyed.
    VLInboxStatement& bind(std::int64_t value);
    /// An id above the signed range is stored as the negative number with the same bits.
    VLInboxStatement& bindId(std::uint64_t value);
    VLInboxStatement& bind(const std::string& text);
    VLInboxStatement& bind(const std::optional<std::string>& text);
    VLInboxStatement& bind(const std::optional<std::int64_t>& value);
    /// A whole number is stored as an integer.
    VLInboxStatement& bind(const std::optional<double>& value);
    VLInboxStatement& bind(const Data& data);
    /// Copies a column of another statement's current row, with its type.
    VLInboxStatement& bindColumn(const VLInboxStatement& row, int column);

    /// Returns SQLite's primary result code: SQLITE_ROW, SQLITE_DONE or an error.
    int step();

    // The columns of the current row, counted from 0, converted as SQLite does. NULL is 0 or `nullopt`.
    std::int64_t integer(int column) const;
    std::uint64_t id(int column) const { return static_cast<std::uint64_t>(integer(column)); }
    double number(int column) const;
    bool isNull(int column) const;
    std::optional<std::string> text(int column) const;
    std::optional<Data> data(int column) const;

private:
    int nextParameter() { return ++parameters_; }

    VLInboxConnection& connection_;
    sqlite3_stmt* statement_ = nullptr;
    int parameters_ = 0;
};

}  // namespace vorlane
