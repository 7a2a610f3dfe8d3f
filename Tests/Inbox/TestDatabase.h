#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

namespace vorlane {

/// A test's own connection to a database file.
class TestDatabase {
public:
    using Row = std::vector<std::string>;

    explicit TestDatabase(const std::string& path) {
        EXPECT_EQ(sqlite3_open(path.c_str(), &database_), SQLITE_OK);
        sqlite3_busy_timeout(database_, 5000);
    }
    ~TestDatabase() { sqlite3_close_v2(database_); }
    TestDatabase(const TestDatabase&) = delete;
    TestDatabase& operator=(const TestDatabase&) = delete;

    void execute(const std::string& sql) {
        char* message = nullptr;
        EXPECT_EQ(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK) << sql;
        sqlite3_free(message);
    }

    /// Returns every row of the statement, each column as a string; NULL is "NULL".
    std::vector<Row> rows(const std::string& sql) {
        std::vector<Row> rows;
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr), SQLITE_OK) << sql;
        while (sqlite3_step(statement) == SQLITE_ROW) rows.push_back(rowOf(statement));
        sqlite3_finalize(statement);
        return rows;
    }

    std::string value(const std::string& sql) {
        const auto found = rows(sql);
        return found.empty() ? "none" : found.front().front();
    }

private:
    static Row rowOf(sqlite3_stmt* statement) {
        Row row;
        for (int i = 0; i < sqlite3_column_count(statement); ++i) {
            const auto* text = static_cast<const char*>(static_cast<const void*>(sqlite3_column_text(statement, i)));
            row.push_back(text ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, i)))
                               : "NULL");
        }
        return row;
    }

    sqlite3* database_ = nullptr;
};

}  // namespace vorlane
