#include "Simulator/Platform/Internal/SimulatedService.h"

#include <utility>

#include "Public/VLConstants.h"
#include "Public/Vorlane.h"
#include "Simulator/Platform/Internal/SimulatedBeacons.h"
#include "Simulator/Platform/Internal/SimulatedGeofences.h"
#include "Simulator/Platform/Internal/SimulatedMailbox.h"
#include "Simulator/Platform/ScriptedURLSession.h"

namespace vorlane {

namespace {

std::string appKey() { return Vorlane::appKey().value_or(""); }

bool isForConfiguration(const NSURLRequest& request) {
    return request.URL.path().find("/config/application/") != std::string::npos;
}

Value configurationWith(const SimulatedGeofences& geofences, const SimulatedBeacons& beacons) {
    const Value services =
        Dictionary{{VLCONFIGSERVICEGEO, !geofences.isEmpty()}, {VLCONFIGSERVICEBEACON, !beacons.isEmpty()}};
    const Value configs =
        Dictionary{{VLCONFIGSERVICEGEO, Dictionary()}, {VLCONFIGSERVICEBEACON, beacons.configuration()}};
    return Dictionary{{"services", services}, {"configs", configs}};
}

}  // namespace

SimulatedService::SimulatedService(std::shared_ptr<ScriptedURLSession> session)
    : session_(std::move(session)),
      mailbox_(std::make_shared<SimulatedMailbox>()),
      geofences_(std::make_shared<SimulatedGeofences>()),
      beacons_(std::make_shared<SimulatedBeacons>()) {}

SimulatedService::~SimulatedService() = default;

std::uint64_t SimulatedService::addInboxMessage(SimulatedInboxMessage message, double now) {
    const auto messageId = mailbox_->add(std::move(message), now);
    session_->alwaysAnswerMatching(
        "the mailbox", SimulatedMailbox::isFor,
        [mailbox = mailbox_](const RecordedRequest& request) { return mailbox->answer(request); });
    return messageId;
}

bool SimulatedService::removeInboxMessage(std::uint64_t messageId) { return mailbox_->remove(messageId); }

std::vector<SimulatedInboxMessage> SimulatedService::inboxMessages() const { return mailbox_->messages(); }

void SimulatedService::addGeofence(SimulatedGeofence geofence) {
    geofences_->add(std::move(geofence));
    session_->alwaysAnswerMatching(
        "the geofences", SimulatedGeofences::isFor,
        [geofences = geofences_](const RecordedRequest& request) { return geofences->answer(request, appKey()); });
    answerConfiguration();
}

bool SimulatedService::removeGeofence(const std::string& identifier) { return geofences_->remove(identifier); }

void SimulatedService::addBeacon(SimulatedBeacon beacon) {
    beacons_->add(std::move(beacon));
    session_->alwaysAnswerMatching(
        "the beacons", SimulatedBeacons::isFor,
        [beacons = beacons_](const RecordedRequest& request) { return beacons->answer(request, appKey()); });
    answerConfiguration();
}

void SimulatedService::answerConfiguration() {
    session_->alwaysAnswerMatching("the configuration", isForConfiguration,
                                   [geofences = geofences_, beacons = beacons_](const RecordedRequest& /*request*/) {
                                       return ScriptedAnswer::withJSON(configurationWith(*geofences, *beacons));
                                   });
}

}  // namespace vorlane
