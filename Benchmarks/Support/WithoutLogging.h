#pragma once

// Included before every source of the library except the log's own, this macro removes each log call together with the
// building of its text. The headers that declare operations of that name precede it.
#include "Core/Base/VLNSLogger.h"
#include "Core/Base/VLOSLogger.h"
#include "Public/VLLog.h"
#include "Public/VLLogger.h"

#define logMessage(...) static_cast<void>(0)
