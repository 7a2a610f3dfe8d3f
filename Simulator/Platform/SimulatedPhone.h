#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"
#include "Platform/Platform.h"
#include "Public/VLValue.h"
#include "Simulator/Platform/ScriptedURLSession.h"
#include "Simulator/Platform/SimulatedApplication.h"
#include "Simulator/Platform/SimulatedBeacon.h"
#include "Simulator/Platform/SimulatedDevice.h"
#include "Simulator/Platform/SimulatedGeofence.h"
#include "Simulator/Platform/SimulatedInboxMessage.h"
#include "Simulator/Platform/SimulatedLocationManager.h"
#include "Simulator/Platform/SimulatedPush.h"
#include "Simulator/Platform/SimulatedUser.h"
#include "Simulator/Platform/SimulatedUserNotificationCenter.h"
#include "Simulator/Platform/SystemLogLine.h"

namespace vorlane {

/// A phone in memory: everything that the library needs of a device, controlled by a test, the demo or the console.
///
/// The clock stands still until `advance()`, unless the real clock is chosen; the network is scripted, unless real HTTP
/// is chosen. The thread that makes the phone is its main thread and the only one that may call the operations below
/// "For a test". Serial queues are real threads; `settle()` waits for them, so a test never needs to sleep.
///
///     auto phone = std::make_shared<SimulatedPhone>();
///     Platform::install(phone);
///     phone->addInboxMessage({.subject = "Hello", .htmlContent = "<p>Welcome</p>"});
///     startYourApplication();
///     phone->settle();
class SimulatedPhone : public Platform {
public:
    struct Options {
        /// The folder of the library's files, where the phone also keeps scheduled local notifications; created if it
        /// is missing. Empty: a fresh temporary folder, which is removed with the phone.
        std::string documentsFolder = {};
        double systemVersion = 12.0;
        /// The start of the virtual clock; `nullopt`: the real clock.
        std::optional<double> virtualClock = 1'700'000'000.0;
        /// Sends requests to real servers instead of the scripted session.
        bool realHTTP = false;
        Dictionary infoDictionary = {};
        std::string resourceFolder = {};
    };

    SimulatedPhone();
    explicit SimulatedPhone(Options options);
    ~SimulatedPhone() override;

    // For the library.

    double systemVersion() const override;
    const Clock& clock() const override;
    std::shared_ptr<DispatchQueue> mainQueue() override;
    std::shared_ptr<DispatchQueue> makeSerialQueue(const std::string& label) override;
    std::shared_ptr<NSTimer> scheduledTimer(TimeInterval seconds, std::function<void()> block) override;
    std::string documentsFolder() const override;
    std::optional<double> documentsCreationDate() const override;
    std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& configuration) override;
    std::shared_ptr<UIApplication> application() override;
    std::shared_ptr<UIDevice> device() override;
    std::shared_ptr<NSNotificationCenter> notificationCenter() override;
    std::shared_ptr<NSBundle> mainBundle() override;
    std::shared_ptr<UNUserNotificationCenter> userNotificationCenter() override;
    std::shared_ptr<CLLocationManager> locationManager() override;
    std::shared_ptr<OSLog> makeOSLog(const std::string& subsystem, const std::string& category) override;
    void NSLog(const std::string& line) override;

    // For a test: the parts of the phone.

    /// The scripted network. Unused by a phone with real HTTP.
    ScriptedURLSession& session();
    SimulatedApplication& simulatedApplication();
    SimulatedDevice& simulatedDevice();
    SimulatedUser& simulatedUser();
    SimulatedUserNotificationCenter& simulatedUserNotificationCenter();
    SimulatedLocationManager& simulatedLocationManager();

    // For a test: time and queues.

    /// Runs the tasks that are due on the main queue, and the tasks that become due meanwhile.
    void runMainQueue();

    /// Blocks until a task is due on the main queue.
    void waitForMainQueue();

    /// Runs the main queue and waits for every serial queue until no task is due. With real HTTP it also waits until no
    /// request is in flight. Returns false if that takes longer than `timeout` real seconds.
    bool settle(TimeInterval timeout = 10.0);

    /// As `settle()`, without waiting for requests in flight.
    bool settleQueues(TimeInterval timeout = 10.0);

    /// Virtual clock only: advances the clock, running what becomes due in the order of time and settling after each
    /// step.
    void advance(TimeInterval seconds);
    /// Virtual clock only: sets the clock, forward or backward, without running anything.
    void setClock(double now);

    double now() const;
    /// The seconds until each delayed task of the application is due, ascending: its valid timers and postponed tasks.
    /// The dates of local notifications are not included.
    std::vector<double> timers() const;

    // For a test: what the service has. These operations answer the library's requests to the endpoints concerned, as
    // rules of `session()`; a rule that the test adds later takes precedence, until the next call. All other requests
    // stay open. A phone with real HTTP does not use them.

    /// Puts a message into the service's mailbox, or replaces the message with its id. Returns the id. The library
    /// fetches it with the next list, which it requests at most every 30 seconds: use `advance()` between two lists.
    std::uint64_t addInboxMessage(SimulatedInboxMessage message);
    /// Takes a message out of the mailbox. Returns false for an unknown id.
    bool removeInboxMessage(std::uint64_t messageId);
    /// The messages in the service's mailboxes, by id. A message that the library reported as read is read; a message
    /// that it deleted is missing.
    std::vector<SimulatedInboxMessage> inboxMessages() const;

    /// Adds a geofence, or replaces the geofence with its identifier. The first one switches geofences on in the remote
    /// configuration, so add it before the library is started. The library fetches geofences when the phone moves.
    ///
    /// The application must meet the requirements of location services: the Info key
    /// "NSLocationAlwaysUsageDescription", and for beacons "location" in "UIBackgroundModes".
    void addGeofence(SimulatedGeofence geofence);
    /// Returns false for an unknown identifier. The library stops monitoring with its next fetch.
    bool removeGeofence(const std::string& identifier);
    /// Adds a beacon, or replaces the beacon with its UUID, major and minor. The library reads the beacons from the
    /// remote configuration, so add them before it is started.
    void addBeacon(SimulatedBeacon beacon);

    // For a test: what happens to the phone. Each of these settles.

    /// Moves the phone: reports the position, then the entry or exit of each geofence whose border was crossed.
    void moveTo(CLLocationCoordinate2D place);
    /// Sets the beacons in reach: reports the entry or exit of each beacon region, then the beacons. Empty: none.
    void detectBeacons(std::vector<CLBeacon> beacons);
    /// Delivers a push in the current state of the application.
    void receivePush(const SimulatedPush& push);
    /// The user opens the notification of a push: the application comes to the foreground, receives the push while it
    /// is inactive, and becomes active. For an application that is not started yet, use
    /// `SimulatedPush::launchOptions()`.
    void openPush(const SimulatedPush& push);
    /// Replaces the delivery of a push. By default it is passed to `Vorlane::didReceiveRemoteNotification()`; an
    /// application with a callback of its own sets that callback here.
    void setRemoteNotificationHandler(std::function<void(const Dictionary& userInfo)> handler);

    // For a test: what was written.

    /// The lines written to the system's log, and those written to the console.
    std::vector<SystemLogLine> systemLog() const;
    std::vector<std::string> console() const;

    void setDocumentsCreationDate(std::optional<double> date);

protected:
    void stop() override;

private:
    struct Impl;
    const std::unique_ptr<Impl> impl_;
};

}  // namespace vorlane
