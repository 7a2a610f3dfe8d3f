#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Clock.h"
#include "Platform/DispatchQueue.h"
#include "Public/VLExport.h"

namespace vorlane {

class CLLocationManager;
class DispatchSemaphore;
class NSBundle;
class NSNotificationCenter;
class NSTimer;
class NSURLSession;
class OSLog;
class StorageFlusher;
class UIApplication;
class UIDevice;
class UNUserNotificationCenter;
struct NSURLSessionConfiguration;

/// What the library needs of the device, with an accessor for each object. Any thread.
///
/// An accessor returns the same object each time; an operation named `make…` returns a new one.
class VORLANE_EXPORT Platform {
public:
    virtual ~Platform();

    /// Installs a platform of the host's own, before the first use of `Vorlane`. The first installation keeps the
    /// endpoint set, the log's threshold and the log's sinks that the host has set before.
    ///
    /// Installing another platform later shuts the library down, as `shutdown()` does and where that may be called, and
    /// starts it afresh: its shared objects are destroyed, and made again on next use. Reinstalling the current
    /// platform has no effect. Null stands for the Linux platform, which is made on first use.
    static void install(std::shared_ptr<Platform> platform);

    /// Returns the installed platform, or makes the Linux platform if there is none. The platform lives until another
    /// one is installed; it is never destroyed at process exit.
    static Platform& current();

    /// Stops the library: cancels requests (their handlers run), runs queued tasks, joins the threads, and returns
    /// within 2 seconds. No code of the library runs afterwards, except a task or a name's look-up that is still
    /// running after these 2 seconds, which ends by itself. To be called on the main thread, not in a handler. Has no
    /// effect if no platform has been used.
    static void shutdown();

    /// The platform generation: the ranges below 10, 10 to 11, and from 12 differ in their notification interfaces.
    virtual double systemVersion() const = 0;

    virtual const Clock& clock() const = 0;

    /// The queue of the application's main thread.
    virtual std::shared_ptr<DispatchQueue> mainQueue() = 0;
    virtual std::shared_ptr<DispatchQueue> makeSerialQueue(const std::string& label) = 0;

    /// Makes a semaphore for a wait on a serial queue. `shutdown()` abandons the wait.
    std::shared_ptr<DispatchSemaphore> makeSemaphore();

    /// `scheduledTimerWithTimeInterval:repeats:block:` runs `block` once on the main queue after `seconds` of the
    /// platform's clock, unless the timer is invalidated first.
    virtual std::shared_ptr<NSTimer> scheduledTimer(TimeInterval seconds, std::function<void()> block);

    /// The folder of the library's files, which may not exist yet.
    virtual std::string documentsFolder() const = 0;
    /// The time of installation in seconds since 1970: when the documents folder was made. `nullopt` if unknown.
    virtual std::optional<double> documentsCreationDate() const = 0;

    /// Makes the files of the library durable, off the main thread.
    StorageFlusher& storage();

    virtual std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& configuration) = 0;
    virtual std::shared_ptr<UIApplication> application() = 0;
    virtual std::shared_ptr<UIDevice> device() = 0;
    virtual std::shared_ptr<NSNotificationCenter> notificationCenter() = 0;
    virtual std::shared_ptr<NSBundle> mainBundle() = 0;
    /// Used only if `systemVersion()` is 10 or later.
    virtual std::shared_ptr<UNUserNotificationCenter> userNotificationCenter() = 0;
    virtual std::shared_ptr<CLLocationManager> locationManager() = 0;

    /// Makes a handle on the system's log.
    virtual std::shared_ptr<OSLog> makeOSLog(const std::string& subsystem, const std::string& category) = 0;
    /// Writes one line to the console.
    virtual void NSLog(const std::string& line) = 0;

protected:
    Platform();

    /// The platform's part of `shutdown()`. Called once, after all waits have been abandoned.
    virtual void stop() = 0;

    /// Ends every current and future wait on the semaphores of `makeSemaphore()`. `shutdown()` calls it before
    /// `stop()`.
    void abandonWaits();

    /// Flushes the files that have changed and joins the storage thread, within 2 seconds of `shutdown()`. The last
    /// step of `stop()` for a platform that removes its folder; `shutdown()` does it for every other.
    void stopStorage(std::chrono::steady_clock::time_point deadline);

private:
    struct Waits;
    const std::unique_ptr<Waits> waits_;
    const std::shared_ptr<StorageFlusher> storage_;
};

/// Posts `task` to the main queue.
VORLANE_EXPORT void onMainQueue(std::function<void()> task);
/// In a debug build, aborts the process if the caller is not on the main queue.
VORLANE_EXPORT void assertMainQueue();

}  // namespace vorlane
