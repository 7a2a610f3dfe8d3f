#pragma once

#include <sqlite3.h>

#include <optional>
#include <string>
#include <utility>

#include "Inbox/VLInboxConnection.h"
#include "Inbox/VLInboxStatement.h"
#include "Platform/NSError.h"

namespace vorlane {

/// The statements of one operation of the inbox store, over one connection. Logs failures and keeps the last one.
class VLInboxOperation {
public:
    explicit VLInboxOperation(VLInboxConnection connection) : connection_(std::move(connection)) {}
    VLInboxOperation(const VLInboxOperation&) = delete;
    VLInboxOperation& operator=(const VLInboxOperation&) = delete;

    VLInboxConnection& connection() { return connection_; }

    /// Runs a statement that returns the rows of one user. Returns whether `row` received all of them.
    template <class Row>
    bool select(const char* sql, const std::string& trackingId, Row row) {
        VLInboxStatement statement(connection_, sql);
        return readAll(statement.bind(trackingId), row);
    }

    template <class Row>
    bool readAll(VLInboxStatement& statement, Row row) {
        if (!statement.isPrepared()) return fail();
        int result = SQLITE_ROW;
        while ((result = statement.step()) == SQLITE_ROW) row(statement);
        return result == SQLITE_DONE || failStep(result);
    }

    /// Runs a statement that returns no rows, with the parameters that `bind` binds.
    template <class Bind>
    bool change(const char* sql, Bind bind) {
        VLInboxStatement statement(connection_, sql);
        if (!statement.isPrepared()) return fail();
        bind(statement);
        const int result = statement.step();
        return result == SQLITE_DONE || failStep(result);
    }

    /// Runs `changes` as one transaction, which is rolled back if it returns false.
    template <class Changes>
    bool inTransaction(Changes changes) {
        if (!connection_.execute("BEGIN IMMEDIATE").empty()) return fail();
        if (changes() && (connection_.execute("COMMIT").empty() || fail())) return true;
        connection_.execute("ROLLBACK");
        return false;
    }

    /// The last failure; `nullopt` if every statement succeeded.
    const std::optional<NSError>& error() const { return error_; }

private:
    bool fail();
    bool failStep(int result);
    bool fail(const char* key, int result);

    VLInboxConnection connection_;
    std::optional<NSError> error_;
};

}  // namespace vorlane
