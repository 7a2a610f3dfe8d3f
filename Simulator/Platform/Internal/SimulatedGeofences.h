#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "Simulator/Platform/ScriptedAnswer.h"
#include "Simulator/Platform/SimulatedGeofence.h"

namespace vorlane {

struct RecordedRequest;

/// The service's geofences: answers the requests for the nearest geofences and for their messages. Any thread.
class SimulatedGeofences {
public:
    /// Whether the request asks for geofences or for the message of one.
    static bool isFor(const NSURLRequest& request);

    /// Adds the geofence, or replaces the geofence with its identifier.
    void add(SimulatedGeofence geofence);
    /// Returns false for an unknown identifier.
    bool remove(const std::string& identifier);
    bool isEmpty() const;

    ScriptedAnswer answer(const RecordedRequest& request, const std::string& appKey) const;

private:
    ScriptedAnswer nearest(const NSURL& url) const;
    std::optional<SimulatedMessage> messageFor(const Value& crossing) const;

    mutable std::mutex mutex_;
    // Guarded by mutex_; by identifier.
    std::map<std::string, SimulatedGeofence> geofences_;
};

}  // namespace vorlane
