#include "Inbox/VLInboxOperation.h"

#include <fmt/format.h>

#include "Core/Base/VLError.h"
#include "Public/VLLog.h"

namespace vorlane {

bool VLInboxOperation::fail() {
    logMessage(VLLogLevel::Error, fmt::format("sqlite3_errmsg - {}", connection_.errorMessage()));
    return fail("sqlite3_errcode", connection_.errorCode());
}

bool VLInboxOperation::failStep(int result) {
    logMessage(VLLogLevel::Error, fmt::format("sqlite3_errcode - {}", result));
    return fail("sqlite3_step result", result);
}

bool VLInboxOperation::fail(const char* key, int result) {
    error_ = VLError::errorWithDomain(VLErrorDomainInbox, 0, connection_.errorMessage(), {{key, result}});
    return false;
}

}  // namespace vorlane
