#include "Platform/LocationBackEnd.h"

namespace vorlane {

LocationBackEnd::Listener::~Listener() = default;
LocationBackEnd::~LocationBackEnd() = default;

}  // namespace vorlane
