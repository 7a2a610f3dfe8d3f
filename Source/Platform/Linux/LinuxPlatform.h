#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Platform.h"
#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

class LocationBackEnd;
class NSURL;
class UILocalNotification;

/// The default platform: a Linux process with libcurl, the XDG folders, the system journal and a main loop.
///
/// Making one does nothing yet: threads, files and requests come with first use. A host that wants options makes its
/// own and hands it to `Platform::install()` before its first use of `Vorlane`.
class VORLANE_EXPORT LinuxPlatform : public Platform {
public:
    /// What a host may settle; each field left as it is stands for a sensible default.
    struct Options {
        /// The application's Info dictionary. Empty: the file "Info.plist" beside the executable, or an empty
        /// dictionary.
        Dictionary infoDictionary;
        /// The folder of the application's resource files. Empty: the folder of the executable.
        std::string resourceFolder;
        /// The folder of the library's files. Empty: a folder in `$XDG_DATA_HOME` (else `~/.local/share`), named like
        /// the bundle identifier (else like the executable).
        std::string documentsFolder;
        /// The queue of the host's own main loop. Nothing: a loop that the host runs with `run()` or polls with
        /// `poll()`.
        std::shared_ptr<DispatchQueue> mainQueue;
        /// The certificates that servers are checked against, as a PEM file and as a folder in OpenSSL's layout. Both
        /// empty: what `SSL_CERT_FILE` and `SSL_CERT_DIR` name, else the places where the common distributions keep
        /// them.
        std::string certificateFile, certificateFolder;
        /// Asks the host's push transport for a token. Main queue. May be empty.
        std::function<void()> registerForRemoteNotifications;
        /// Asks the host to wake itself for a background fetch no more often than that many seconds. Main queue. May be
        /// empty.
        std::function<void(TimeInterval)> setMinimumBackgroundFetchInterval;
        /// Shows a local notification that is due: once each, also those that fell due while no process ran, and those
        /// scheduled by an earlier process. When the user opens it, the host calls
        /// `Vorlane::didReceiveLocalNotification()`. Main queue. Empty: nothing is shown.
        std::function<void(const UILocalNotification&)> deliverLocalNotification;
        /// Opens a URL; `UIApplicationOpenSettingsURLString` stands for the page where the user settles what this
        /// application may do. Main queue. Empty: nothing is opened.
        std::function<void(const NSURL&)> openURL;
        /// Asks the user about notifications, and tells what is allowed. Nothing: a centre that is not determined,
        /// where every request ends with an error.
        std::shared_ptr<UNUserNotificationCenter> userNotificationCenter;
        /// Where positions and the advertisements of beacons come from; the platform finds out by itself what happens
        /// to the regions that the library watches. Nothing: no position, and location is not determined.
        std::shared_ptr<LocationBackEnd> locationBackEnd;
    };

    LinuxPlatform();
    explicit LinuxPlatform(Options options);
    /// Stops what still runs, as `Platform::shutdown()` does.
    ~LinuxPlatform() override;

    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    /// Runs the main queue on the calling thread, which becomes the main thread, until `stopRunning()`. A stop that was
    /// asked for before ends it at once. One thread at a time. Returns at once when the host brought its own queue or
    /// the platform is shut down.
    void run();

    /// As `run()`, for that many seconds at most.
    void runFor(TimeInterval seconds);

    /// Runs the tasks of the main queue that are due on the calling thread, which becomes the main thread, and never
    /// waits. What they post in turn may be left for the next call. Returns how many tasks ran; 0 means nothing is due.
    std::size_t poll();

    /// Ends `run()` and `runFor()` once the task under way is done. Any thread.
    void stopRunning();

    /// 12.0.
    double systemVersion() const override;

    /// The system's clock.
    const Clock& clock() const override;

    std::shared_ptr<DispatchQueue> mainQueue() override;
    /// A queue on one thread of its own, which starts with the first task.
    std::shared_ptr<DispatchQueue> makeSerialQueue(const std::string& label) override;

    std::string documentsFolder() const override;
    std::optional<double> documentsCreationDate() const override;

    /// A session over libcurl, on one thread that starts with its first request.
    std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& configuration) override;
    /// The first call reads "VLScheduledNotifications.plist" in the documents folder: the local notifications that an
    /// earlier process scheduled.
    std::shared_ptr<UIApplication> application() override;
    std::shared_ptr<UIDevice> device() override;
    std::shared_ptr<NSNotificationCenter> notificationCenter() override;
    std::shared_ptr<NSBundle> mainBundle() override;
    std::shared_ptr<UNUserNotificationCenter> userNotificationCenter() override;
    /// The first call reads "VLMonitoredRegions.plist" in the documents folder: the regions that an earlier process
    /// watched.
    std::shared_ptr<CLLocationManager> locationManager() override;

    /// A handle on the system journal.
    std::shared_ptr<OSLog> makeOSLog(const std::string& subsystem, const std::string& category) override;
    /// Writes the line to standard error, in one piece.
    void NSLog(const std::string& line) override;

protected:
    void stop() override;

private:
    struct State;
    const std::unique_ptr<State> state_;
};

/// The platform of a host that installed none: a `LinuxPlatform` without options.
std::shared_ptr<Platform> makeDefaultPlatform();

}  // namespace vorlane
