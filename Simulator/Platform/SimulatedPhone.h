#pragma once

#include <cstdint>
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

namespace vorlane {

/// A phone in memory: everything that the library asks of a device, under the control of a test, the demo or the
/// console.
///
/// Time stands still until `advance()` (unless the real clock was chosen); the network is scripted (unless real HTTP
/// was chosen). The thread that makes the phone is its main thread, and it alone calls the phone's own operations.
/// Serial queues are real threads; `settle()` waits for them, so nothing in a test needs to sleep.
class SimulatedPhone : public Platform {
public:
    struct Options {
        /// Where the library's files go, and those of the phone, which keeps scheduled local notifications there; made
        /// when missing. Empty: a fresh temporary folder that goes with the phone.
        std::string documentsFolder = {};
        double systemVersion = 12.0;
        /// Where the virtual clock starts; nothing: the real clock.
        std::optional<double> virtualClock = 1'700'000'000.0;
        /// Requests go to real servers instead of the scripted session.
        bool realHTTP = false;
        Dictionary infoDictionary = {};
        std::string resourceFolder = {};
    };

    SimulatedPhone();
    explicit SimulatedPhone(Options options);
    ~SimulatedPhone() override;

    // The phone as the library sees it.
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

    // The phone as a test handles it.

    /// The scripted network. Not for a phone with real HTTP.
    ScriptedURLSession& session();
    SimulatedApplication& simulatedApplication();
    SimulatedDevice& simulatedDevice();
    SimulatedUser& simulatedUser();
    SimulatedUserNotificationCenter& simulatedUserNotificationCenter();
    SimulatedLocationManager& simulatedLocationManager();

    /// Runs what is due on the main queue, and what that makes due at this moment, until nothing is.
    void runMainQueue();

    /// Waits until something is due on the main queue. For a program that has nothing else to do meanwhile.
    void waitForMainQueue();

    /// Runs the main queue and waits for every serial queue, over and over, until nothing is left to do at this moment.
    /// With real HTTP it also waits until no request is in flight. False when that takes longer than `timeout` real
    /// seconds.
    bool settle(TimeInterval timeout = 10.0);

    /// As `settle()`, but without waiting for requests in flight.
    bool settleQueues(TimeInterval timeout = 10.0);

    /// Virtual clock only: moves time forward, running what falls due in order of time and settling after each.
    void advance(TimeInterval seconds);
    /// Virtual clock only: moves the clock without running anything, also backwards, as a user does who sets it.
    void setClock(double now);

    double now() const;
    /// The seconds until each delayed task of the application's on the main queue is due, ascending: its timers that
    /// are still valid, and what it has put off. The dates of local notifications are not among them.
    std::vector<double> timers() const;

    /// What went to the system's log: the type and the text; and to the console.
    struct SystemLogLine {
        std::string subsystem;
        std::string category;
        std::uint8_t type;
        std::string text;
    };
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
