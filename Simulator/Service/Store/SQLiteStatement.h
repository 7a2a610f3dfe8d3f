#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Public/VLValue.h"

struct sqlite3_stmt;

namespace vorlane::service {

class SQLiteDatabase;

/// One SQL statement with its parameters, run once. Must not outlive its database. Every operation throws ServiceError
/// on failure.
class SQLiteStatement {
public:
    SQLiteStatement(SQLiteDatabase& database, const std::string& sql);

    /// Binds the parameters ?1, ?2, … in this order.
    template <class... Values>
    SQLiteStatement& bind(const Values&... values) {
        (bindNext(values), ...);
        return *this;
    }

    /// Moves to the next row. Returns false if there is none.
    bool step();
    /// For a statement without rows.
    void run();

    /// The columns of the current row by name. A column declared JSON TEXT is returned as its parsed value, a column
    /// declared BOOLEAN as a boolean.
    Dictionary row() const;
    /// All remaining rows.
    Array rows();
    std::string text(int column) const;
    std::int64_t integer(int column) const;

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };

    void bindNext(const std::string& text);
    void bindNext(const std::optional<std::string>& text);
    void bindNext(const std::optional<std::int64_t>& number);
    void bindNext(double number);
    void check(int status) const;
    Value value(int column) const;

    SQLiteDatabase& database_;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    int bound_ = 0;
};

}  // namespace vorlane::service
