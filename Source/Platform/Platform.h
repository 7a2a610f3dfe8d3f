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

/// Everything that the library needs of the device, with an accessor for each object. Any thread.
///
/// Every accessor gives the same object each time; the ones named `make…` give a new one.
class VORLANE_EXPORT Platform {
public:
    virtual ~Platform();

    /// Puts a platform of the host's own in place, before the first use of `Vorlane`. Installing another one later
    /// shuts the library down, as `shutdown()` does and where that may be called, and starts it afresh: its shared
    /// objects are dropped and made again on next use. The one in force already stays as it is. Null: the Linux
    /// platform, once one is asked for.
    static void install(std::shared_ptr<Platform> platform);

    /// The installed platform; the Linux platform is made when there is none. Lives until another one is installed,
    /// never destroyed at process exit.
    static Platform& current();

    /// Stops the library's machinery: cancels requests (their handlers run), runs what is queued, joins every thread,
    /// and returns within 2 seconds. Nothing of the library runs afterwards. To be called on the main thread, outside
    /// any handler; does nothing when no platform was ever used.
    static void shutdown();

    /// The platform generation: below 10, 10 to 11, 12 and later differ in how notifications work.
    virtual double systemVersion() const = 0;

    virtual const Clock& clock() const = 0;

    /// The queue of the application's main thread.
    virtual std::shared_ptr<DispatchQueue> mainQueue() = 0;
    virtual std::shared_ptr<DispatchQueue> makeSerialQueue(const std::string& label) = 0;

    /// A semaphore for a wait on a serial queue; `shutdown()` abandons the wait.
    std::shared_ptr<DispatchSemaphore> makeSemaphore();

    /// `scheduledTimerWithTimeInterval:repeats:block:` runs `block` once on the main queue, after that many seconds of
    /// the platform's clock, unless the timer is invalidated before.
    virtual std::shared_ptr<NSTimer> scheduledTimer(TimeInterval seconds, std::function<void()> block);

    /// The folder that holds the library's files; it may not exist yet.
    virtual std::string documentsFolder() const = 0;
    /// When the application was installed, in seconds since 1970: the date that folder was made. Nothing when it cannot
    /// be told.
    virtual std::optional<double> documentsCreationDate() const = 0;

    /// Makes the files of the library durable, off the main thread.
    StorageFlusher& storage();

    virtual std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& configuration) = 0;
    virtual std::shared_ptr<UIApplication> application() = 0;
    virtual std::shared_ptr<UIDevice> device() = 0;
    virtual std::shared_ptr<NSNotificationCenter> notificationCenter() = 0;
    virtual std::shared_ptr<NSBundle> mainBundle() = 0;
    /// Asked for on platforms from 10 on.
    virtual std::shared_ptr<UNUserNotificationCenter> userNotificationCenter() = 0;
    virtual std::shared_ptr<CLLocationManager> locationManager() = 0;

    /// A handle on the system's log.
    virtual std::shared_ptr<OSLog> makeOSLog(const std::string& subsystem, const std::string& category) = 0;
    /// Writes one line to the console.
    virtual void NSLog(const std::string& line) = 0;

protected:
    Platform();

    /// What `shutdown()` does to this platform. Called once, when no wait keeps a queue any more.
    virtual void stop() = 0;

    /// Ends every wait of `makeSemaphore()`'s semaphores, and those to come. `shutdown()` does so before `stop()`.
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
/// In a debug build, ends a process that comes here outside the main queue.
VORLANE_EXPORT void assertMainQueue();

}  // namespace vorlane
