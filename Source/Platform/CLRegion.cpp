#include "Platform/CLRegion.h"

namespace vorlane {

CLRegion::~CLRegion() = default;

}  // namespace vorlane
