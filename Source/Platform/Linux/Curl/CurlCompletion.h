#pragma once

#include <memory>
#include <optional>

#include "Platform/NSURLSession.h"

namespace vorlane {

/// The end of one task: its handler, and what it is to be called with.
struct CurlCompletion {
    NSURLSession::CompletionHandler handler;
    std::optional<Data> data;
    std::shared_ptr<const NSURLResponse> response;
    std::optional<NSError> error;
};

}  // namespace vorlane
