#include "Platform/UIDevice.h"

namespace vorlane {

UIDevice::~UIDevice() = default;

}  // namespace vorlane
