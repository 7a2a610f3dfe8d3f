#pragma once

#include <memory>

#include "Platform/UIApplication.h"

namespace vorlane {

/// Calls every operation of the facade in every shape that a host may write. Includes `Vorlane.h` alone.
void callEveryShape(const std::shared_ptr<UIApplication>& application);

}  // namespace vorlane
