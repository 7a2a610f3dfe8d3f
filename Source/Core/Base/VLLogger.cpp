#include "Public/VLLogger.h"

namespace vorlane {

VLLogger::~VLLogger() = default;

}  // namespace vorlane
