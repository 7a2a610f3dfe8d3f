#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "Inbox/VLInboxConnection.h"

namespace vorlane {

/// Copies the rows that can still be read from a damaged database into a new one. The damaged file itself is only
/// read; the work is done on a temporary copy beside it, whose header and table definitions are set right first. The
/// inbox service's background queue only.
class VLInboxDatabaseSalvage {
public:
    /// `path` is the damaged file, to which no connection may be open.
    explicit VLInboxDatabaseSalvage(std::string path);
    ~VLInboxDatabaseSalvage();
    VLInboxDatabaseSalvage(const VLInboxDatabaseSalvage&) = delete;
    VLInboxDatabaseSalvage& operator=(const VLInboxDatabaseSalvage&) = delete;

    /// Copies the rows of both tables in one transaction and returns how many were copied. `nullopt` if the damaged
    /// file could not be copied or `destination` could not be written; `destination` is then unusable.
    std::optional<std::size_t> copyRowsTo(VLInboxConnection& destination);

private:
    bool makeWorkingCopy() const;

    // Fixed at construction.
    const std::string path_;
    const std::string workPath_;
};

}  // namespace vorlane
