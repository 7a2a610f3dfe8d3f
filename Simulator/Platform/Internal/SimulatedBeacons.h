#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Simulator/Platform/ScriptedAnswer.h"
#include "Simulator/Platform/SimulatedBeacon.h"

namespace vorlane {

struct RecordedRequest;

/// The service's beacons: answers the requests for their messages and the reports of visits. Any thread.
class SimulatedBeacons {
public:
    /// Whether the request asks for the message of a beacon, or reports a visit.
    static bool isFor(const NSURLRequest& request);

    /// Adds the beacon, or replaces the beacon with its UUID, major and minor.
    void add(SimulatedBeacon beacon);
    bool isEmpty() const;
    /// The beacon part of the configuration document.
    Value configuration() const;

    ScriptedAnswer answer(const RecordedRequest& request, const std::string& appKey) const;

private:
    std::optional<SimulatedMessage> messageFor(const Value& reported) const;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<SimulatedBeacon> beacons_;
};

}  // namespace vorlane
