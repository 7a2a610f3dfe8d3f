#include "Inbox/VLInboxDatabaseCheck.h"

#include <sqlite3.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Inbox/VLInboxConnection.h"
#include "Inbox/VLInboxSchema.h"
#include "Inbox/VLInboxStatement.h"

namespace vorlane {

namespace {

using CheckResult = VLInboxDatabaseCheck::Result;

std::vector<std::string> definitions(VLInboxConnection& connection) {
    std::vector<std::string> found;
    VLInboxStatement statement(connection, "SELECT sql FROM sqlite_master");
    if (!statement.isPrepared()) return found;
    while (statement.step() == SQLITE_ROW) found.push_back(statement.text(0).value_or(""));
    return found;
}

/// Damage changes bytes, but not the length of a definition.
bool isDamagedDefinition(const std::string& definition) {
    return std::ranges::any_of(kInboxTables, [&definition](const VLInboxTable& table) {
        const auto intact = table.definition();
        return definition.size() == intact.size() && definition != intact;
    });
}

bool hasDamagedFormat(VLInboxConnection& connection) {
    return connection.hasUnknownFormat() || std::ranges::any_of(definitions(connection), isDamagedDefinition);
}

CheckResult quickCheck(VLInboxConnection& connection) {
    VLInboxStatement statement(connection, "PRAGMA quick_check(1)");
    const bool hasAnswer = statement.isPrepared() && statement.step() == SQLITE_ROW;
    if (hasAnswer) return statement.text(0) == "ok" ? CheckResult::Sound : CheckResult::Damaged;
    return connection.isCorrupt() ? CheckResult::Damaged : CheckResult::Unknown;
}

CheckResult checkOnce(const std::string& path) {
    VLInboxConnection connection(path);
    if (!connection.isOpen() || !connection.isReadable()) return CheckResult::Unknown;
    return hasDamagedFormat(connection) ? CheckResult::Damaged : quickCheck(connection);
}

}  // namespace

VLInboxDatabaseCheck::Result VLInboxDatabaseCheck::check(const std::string& path) {
    const auto result = checkOnce(path);
    // A device that fails now and then may fail during the check, too.
    return result == CheckResult::Damaged ? checkOnce(path) : result;
}

bool VLInboxDatabaseCheck::isSuspicious(VLInboxConnection& connection) {
    if (connection.hasUnknownFormat()) return true;
    const auto found = definitions(connection);
    return std::ranges::any_of(kInboxTables, [&found](const VLInboxTable& table) {
        return std::ranges::find(found, table.definition()) == found.end();
    });
}

}  // namespace vorlane
