#include "Platform/UIAlertController.h"

namespace vorlane {

UIAlertController::~UIAlertController() = default;

}  // namespace vorlane
