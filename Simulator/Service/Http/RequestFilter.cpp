#include "Simulator/Service/Http/RequestFilter.h"

#include "Simulator/Service/Http/RecordedRequest.h"

namespace vorlane::service {
namespace {

bool isWanted(const std::optional<std::string>& wanted, const std::string& text) { return !wanted || *wanted == text; }

}  // namespace

bool RequestFilter::admits(const RecordedRequest& record) const {
    return record.number > since && isWanted(endpoint, record.endpoint) && isWanted(method, record.request.method) &&
           isWanted(path, record.request.path) && isWanted(appKey, record.appKey) &&
           isWanted(trackingId, record.trackingId) && (!status || record.status == status);
}

}  // namespace vorlane::service
