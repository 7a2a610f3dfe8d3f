#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Platform.h"
#include "Public/VLValue.h"
#include "Simulator/Platform/ScriptedURLSession.h"
#include "Simulator/Platform/SimulatedApplication.h"
#include "Simulator/Platform/SimulatedDevice.h"
#include "Simulator/Platform/SimulatedLocationManager.h"
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
