#include "Inbox/VLInboxRows.h"

#include <algorithm>
#include <utility>

#include "Inbox/VLInboxIds.h"

namespace vorlane {

namespace {

bool isListedBefore(const VLInboxMessage& left, const VLInboxMessage& right) {
    if (left.created() != right.created()) return left.created() > right.created();
    // The database compares ids with a sign.
    return static_cast<std::int64_t>(left.messageId()) > static_cast<std::int64_t>(right.messageId());
}

}  // namespace

VLInboxRows visibleRows(const VLInboxRows& rows, double now) {
    VLInboxRows visible;
    visible.reserve(rows.size());
    VLInboxIds taken;
    taken.reserve(rows.size());
    for (const auto& row : rows) {
        if (row->end() > now && taken.insert(row->messageId()).second) visible.push_back(row);
    }
    return visible;
}

std::size_t unreadCount(const VLInboxRows& rows, double now) {
    VLInboxIds unread;
    for (const auto& row : rows) {
        if (row->end() > now && row->read() == 0) unread.insert(row->messageId());
    }
    return unread.size();
}

void VLInboxKeptRows::end() {
    if (--users_ > 0) return;
    rows_ = nullptr;
    stamp_.reset();
}

std::shared_ptr<const VLInboxRows> VLInboxKeptRows::rows(const std::string& trackingId,
                                                         const std::optional<Stamp>& now) const {
    const bool isCurrent = rows_ && stamp_ && trackingId == trackingId_ && now == stamp_;
    return isCurrent ? rows_ : nullptr;
}

void VLInboxKeptRows::keep(const std::string& trackingId, std::shared_ptr<const VLInboxRows> rows,
                           const std::optional<Stamp>& stamp) {
    if (!isKeeping() || !rows) return;
    trackingId_ = trackingId;
    rows_ = std::move(rows);
    stamp_ = stamp;
}

void VLInboxKeptRows::add(const std::string& trackingId, std::shared_ptr<VLInboxMessage> row,
                          const std::optional<Stamp>& before, const std::optional<Stamp>& after) {
    const bool isOnlyChange = before && after && after->file == before->file &&
                              after->changeCounter == before->changeCounter + std::uint32_t{1};
    if (!rows_ || stamp_ != before || trackingId != trackingId_ || !isOnlyChange) return;
    auto rows = std::make_shared<VLInboxRows>(*rows_);
    const auto place = std::ranges::upper_bound(
        *rows, row, [](const auto& left, const auto& right) { return isListedBefore(*left, *right); });
    rows->insert(place, std::move(row));
    rows_ = std::move(rows);
    stamp_ = after;
}

}  // namespace vorlane
