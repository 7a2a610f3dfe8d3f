#include "Platform/Clock.h"

namespace vorlane {

Clock::~Clock() = default;

}  // namespace vorlane
