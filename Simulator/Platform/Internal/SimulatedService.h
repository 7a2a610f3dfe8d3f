#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Simulator/Platform/SimulatedBeacon.h"
#include "Simulator/Platform/SimulatedGeofence.h"
#include "Simulator/Platform/SimulatedInboxMessage.h"

namespace vorlane {

class ScriptedURLSession;
class SimulatedBeacons;
class SimulatedGeofences;
class SimulatedMailbox;

/// The engagement service behind the scripted network. Adding content programs the session's answers for the endpoints
/// concerned, and for no others. Any thread except the session's queue.
class SimulatedService {
public:
    explicit SimulatedService(std::shared_ptr<ScriptedURLSession> session);
    ~SimulatedService();

    std::uint64_t addInboxMessage(SimulatedInboxMessage message, double now);
    bool removeInboxMessage(std::uint64_t messageId);
    std::vector<SimulatedInboxMessage> inboxMessages() const;

    void addGeofence(SimulatedGeofence geofence);
    bool removeGeofence(const std::string& identifier);

    void addBeacon(SimulatedBeacon beacon);

private:
    void answerConfiguration();

    // Fixed at construction.
    const std::shared_ptr<ScriptedURLSession> session_;
    const std::shared_ptr<SimulatedMailbox> mailbox_;
    const std::shared_ptr<SimulatedGeofences> geofences_;
    const std::shared_ptr<SimulatedBeacons> beacons_;
};

}  // namespace vorlane
