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

/// The service without its HTTP server: finds the endpoint of a request, lets scripted faults happen to it, and keeps a
/// record of it. Any thread.
class EngagementService {
public:
    /// The path of its database, or ":memory:"; `listener` is told of every recorded request. Throws ServiceError.
    explicit EngagementService(const std::string& databasePath, RequestLog::Listener listener = nullptr);

    /// Answers a request; takes as long as a scripted fault or a waiting operator wants it to.
    ///
    /// The record of the request stands in the log before this returns, and before a scripted delay begins; by then
    /// what the request says is stored.
    ServiceResponse answer(const ServiceRequest& request);

    /// Ends all waiting, now and from now on.
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
