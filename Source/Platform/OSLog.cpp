#include "Platform/OSLog.h"

namespace vorlane {

OSLog::~OSLog() = default;

}  // namespace vorlane
