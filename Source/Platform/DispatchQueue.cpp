#include "Platform/DispatchQueue.h"

namespace vorlane {

DispatchQueue::~DispatchQueue() = default;

}  // namespace vorlane
