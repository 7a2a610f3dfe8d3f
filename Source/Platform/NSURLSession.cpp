#include "Platform/NSURLSession.h"

namespace vorlane {

NSURLResponse::~NSURLResponse() = default;

NSHTTPURLResponse::~NSHTTPURLResponse() = default;

NSURLSessionDataTask::~NSURLSessionDataTask() = default;

NSURLSession::~NSURLSession() = default;

}  // namespace vorlane
