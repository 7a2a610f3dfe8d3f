#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace vorlane {

class VLInboxConnection;
class VLInboxStatement;

/// Copies the readable rows of one damaged table: from both ends of the table up to the first unreadable row, and then
/// from ever smaller halves of the range between.
class VLInboxTableSalvage {
public:
    struct Table {
        const char* name;
        /// An integer that is the row's id.
        const char* key;
        /// All columns, the key first.
        const char* columns;
        int columnCount;
    };
    static Table inboxTable();
    static Table trashTable();

    VLInboxTableSalvage(VLInboxConnection& source, VLInboxConnection& destination, const Table& table);

    /// Returns false only if a row could not be written.
    bool copyRows();
    std::size_t count() const { return count_; }

private:
    using Key = std::int64_t;
    struct Range {
        Key first = std::numeric_limits<Key>::min();
        Key last = std::numeric_limits<Key>::max();
    };

    /// Returns false if the definition of the table cannot be read.
    bool canQuery();
    void copyEnds();
    void copyHalves();
    /// Copies a range until it ends or a row cannot be read. Returns the part that is left, if any.
    std::optional<Range> copyRange(Range range, bool isAscending = true);
    void insertRow(const VLInboxStatement& row);

    VLInboxConnection& source_;
    VLInboxConnection& destination_;
    const int columnCount_;
    const std::string selectAscending_;
    const std::string selectDescending_;
    const std::string insert_;
    std::optional<Range> hole_;
    std::size_t count_ = 0;
    bool isWritable_ = true;
};

}  // namespace vorlane
