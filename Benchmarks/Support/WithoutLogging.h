#pragma once

// Included before every source of the library that only calls the log, this makes each such call vanish together with
// the building of its text. The headers that declare an operation of that name come first.
#include "Core/Base/VLNSLogger.h"
#include "Core/Base/VLOSLogger.h"
#include "Public/VLLog.h"
#include "Public/VLLogger.h"

#define logMessage(...) static_cast<void>(0)
