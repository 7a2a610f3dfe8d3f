#include "Platform/UNUserNotificationCenter.h"

namespace vorlane {

UNUserNotificationCenter::~UNUserNotificationCenter() = default;

}  // namespace vorlane
