#include "Inbox/VLInboxTableSalvage.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <deque>

#include "Inbox/VLInboxConnection.h"
#include "Inbox/VLInboxStatement.h"

namespace vorlane {

namespace {

/// The range of keys that is searched if an end of the table cannot be read.
constexpr std::int64_t kReach = std::int64_t{1} << 20U;
/// Limits the search in a table that is mostly unreadable to about half a second.
constexpr int kMostProbes = 4'000;

constexpr VLInboxTableSalvage::Table kInbox{
    "RICH_INBOX", "ID",
    "ID, TRACKING_ID, NOTIF_ID, SUBJECT, CONTENT, LABEL, URL, PHASH, READ, CREATED, END, CARD_URL, BACKGROUND_COLOR, "
    "FOREGROUND_COLOR, CARD_IMAGE, METADATA",
    16};
constexpr VLInboxTableSalvage::Table kTrash{"RICH_TRASH", "NOTIF_ID", "NOTIF_ID, TRACKING_ID", 2};

/// Selects a range of keys, both ends included.
std::string selectStatement(const VLInboxTableSalvage::Table& table, const char* order) {
    return fmt::format("SELECT {0} FROM {1} WHERE {2} BETWEEN ? AND ? ORDER BY {2} {3}", table.columns, table.name,
                       table.key, order);
}

std::string insertStatement(const VLInboxTableSalvage::Table& table) {
    std::string parameters = "?";
    for (int i = 1; i < table.columnCount; ++i) parameters += ",?";
    return fmt::format("INSERT OR IGNORE INTO {} ({}) VALUES ({})", table.name, table.columns, parameters);
}

std::int64_t sumUpToMaximum(std::int64_t left, std::int64_t right) {
    std::int64_t sum = 0;
    return __builtin_add_overflow(left, right, &sum) ? std::numeric_limits<std::int64_t>::max() : sum;
}

std::int64_t middle(std::int64_t first, std::int64_t last) {
    const auto distance = static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first);
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(first) + distance / 2);
}

}  // namespace

VLInboxTableSalvage::Table VLInboxTableSalvage::inboxTable() { return kInbox; }

VLInboxTableSalvage::Table VLInboxTableSalvage::trashTable() { return kTrash; }

VLInboxTableSalvage::VLInboxTableSalvage(VLInboxConnection& source, VLInboxConnection& destination, const Table& table)
    : source_(source),
      destination_(destination),
      columnCount_(table.columnCount),
      selectAscending_(selectStatement(table, "ASC")),
      selectDescending_(selectStatement(table, "DESC")),
      insert_(insertStatement(table)) {}

bool VLInboxTableSalvage::copyRows() {
    if (canQuery()) {
        copyEnds();
        copyHalves();
    }
    return isWritable_;
}

void VLInboxTableSalvage::copyEnds() {
    constexpr Range kAll;
    hole_ = copyRange(kAll);
    if (!hole_) return;
    const Key first = hole_->first;
    hole_ = copyRange(*hole_, false);
    if (!hole_) return;
    // Keys are counted up from 1, so those beyond an unreadable end are close.
    if (first == kAll.first) hole_->first = 0;
    if (hole_->last == kAll.last) hole_->last = sumUpToMaximum(hole_->first, kReach);
    if (hole_->first > hole_->last) hole_.reset();
}

bool VLInboxTableSalvage::canQuery() { return VLInboxStatement(source_, selectAscending_.c_str()).isPrepared(); }

void VLInboxTableSalvage::copyHalves() {
    std::deque<Range> holes;
    if (hole_) holes.push_back(*hole_);
    for (int probes = 0; !holes.empty() && probes < kMostProbes && isWritable_; ++probes) {
        const auto hole = holes.front();
        holes.pop_front();
        if (hole.first >= hole.last) continue;
        const Key half = middle(hole.first, hole.last);
        for (const auto range : {Range{hole.first, half}, Range{half + 1, hole.last}}) {
            if (const auto left = copyRange(range)) holes.push_back(*left);
        }
    }
}

std::optional<VLInboxTableSalvage::Range> VLInboxTableSalvage::copyRange(Range range, bool isAscending) {
    VLInboxStatement statement(source_, (isAscending ? selectAscending_ : selectDescending_).c_str());
    if (!statement.isPrepared()) return range;
    statement.bind(range.first).bind(range.last);
    int result = SQLITE_ROW;
    while (isWritable_ && (result = statement.step()) == SQLITE_ROW) {
        insertRow(statement);
        const Key key = statement.integer(0);
        if (key == (isAscending ? range.last : range.first)) return std::nullopt;
        (isAscending ? range.first : range.last) = isAscending ? key + 1 : key - 1;
    }
    return result == SQLITE_DONE ? std::nullopt : std::optional(range);
}

void VLInboxTableSalvage::insertRow(const VLInboxStatement& row) {
    VLInboxStatement statement(destination_, insert_.c_str());
    if (statement.isPrepared()) {
        for (int column = 0; column < columnCount_; ++column) statement.bindColumn(row, column);
        if (statement.step() == SQLITE_DONE) {
            ++count_;
            return;
        }
    }
    isWritable_ = false;
}

}  // namespace vorlane
