#pragma once

#include <memory>
#include <optional>

#include "Platform/NSURLSession.h"

namespace vorlane {

/// The end of one task: the handler and its arguments.
struct CurlCompletion {
    NSURLSession::CompletionHandler handler;
    std::optional<Data> data;
    std::shared_ptr<const NSURLResponse> response;
    std::optional<NSError> error;
};

}  // namespace vorlane
