#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"

struct sqlite3_stmt;

namespace vorlane {

class VLInboxConnection;

/// One prepared statement; finalised when the object goes, before its connection.
class VLInboxStatement {
public:
    /// A failure shows in `isPrepared()`; the connection tells why.
    VLInboxStatement(VLInboxConnection& connection, const char* sql);
    ~VLInboxStatement();
    VLInboxStatement(const VLInboxStatement&) = delete;
    VLInboxStatement& operator=(const VLInboxStatement&) = delete;

    bool isPrepared() const { return statement_ != nullptr; }

    /// Each binds the next parameter; nothing binds NULL. Texts and data must stay as they are until the next `reset()`
    /// or the end of the statement.
    VLInboxStatement& bind(std::int64_t value);
    /// An id above the signed range is stored as the negative number of the same bits.
    VLInboxStatement& bindId(std::uint64_t value);
    VLInboxStatement& bind(const std::string& text);
    VLInboxStatement& bind(const std::optional<std::string>& text);
    VLInboxStatement& bind(const std::optional<std::int64_t>& value);
    /// A whole number is stored as an integer.
    VLInboxStatement& bind(const std::optional<double>& value);
    VLInboxStatement& bind(const Data& data);

    /// SQLite's primary result code: SQLITE_ROW, SQLITE_DONE, or what failed.
    int step();
    /// Makes it ready for other parameters.
    void reset();

    // The columns of the row, from 0 on, read as SQLite converts them. NULL is 0, or nothing.
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
