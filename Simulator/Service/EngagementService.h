#pragma once

#include <optional>
#include <string>

#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/FaultScript.h"
#include "Simulator/Service/Http/RequestLog.h"
#include "Simulator/Service/Http/StopSignal.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {

struct EndpointCall;
struct ServiceRequest;

/// The service without its HTTP server: finds the endpoint of a request, applies scripted faults, and records the
/// request. Any thread.
class EngagementService {
public:
    /// Opens the database at the path, or ":memory:". `listener` is called with every recorded request. Throws
    /// ServiceError.
    explicit EngagementService(const std::string& databasePath, RequestLog::Listener listener = nullptr);

    /// Answers a request. Blocks for the duration of a scripted delay, or while an operator waits for requests.
    ///
    /// The request is stored and recorded before this returns, and before a scripted delay begins.
    ServiceResponse answer(const ServiceRequest& request);

    /// Ends every wait, current and later.
    void stop();

    ServiceStore& store() { return store_; }
    RequestLog& log() { return log_; }
    FaultScript& faults() { return faults_; }
    const EndpointRouter& router() const { return router_; }
    const StopSignal& stopSignal() const { return stopSignal_; }

private:
    ServiceResponse answerRecorded(const EndpointRouter::Match& match, EndpointCall& call);
    ServiceResponse answerWithFault(const EndpointRouter::Match& match, EndpointCall& call,
                                    const std::optional<Fault>& fault) const;

    StopSignal stopSignal_;
    ServiceStore store_;
    RequestLog log_;
    FaultScript faults_;
    // Filled by the constructor.
    EndpointRouter router_;
};

}  // namespace vorlane::service
