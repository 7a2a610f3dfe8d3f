#include "Platform/NSException.h"

#include <utility>

namespace vorlane {

NSException::NSException(std::string name, std::string reason)
    : name_(std::move(name)), reason_(std::move(reason)), what_(name_ + ": " + reason_) {}

NSException::~NSException() = default;

}  // namespace vorlane
