#include "Public/VLURLs.h"

namespace vorlane {

VLURLs::~VLURLs() = default;

}  // namespace vorlane
