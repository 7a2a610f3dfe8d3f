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
/// Construction only stores the options; threads, files and connections are made on first use. A host that needs
/// options constructs a platform and passes it to `Platform::install()` before its first use of `Vorlane`:
///
///     auto platform = std::make_shared<LinuxPlatform>(LinuxPlatform::Options{
///         .infoDictionary = {{"CFBundleIdentifier", "com.example.app"}, {"CFBundleShortVersionString", "1.0"}}});
///     Platform::install(platform);
class VORLANE_EXPORT LinuxPlatform : public Platform {
public:
    /// Every field has a default.
    struct Options {
        /// The application's Info dictionary. Empty: the property list "Info.plist" (XML or binary) in the folder of
        /// the executable, if there is one. The library reads these keys:
        ///
        /// | Key | Value | Used for |
        /// |---|---|---|
        /// | `VL_App_Key` | string, 32 characters | the app key, if `VLSDKOptions` has none |
        /// | `CFBundleIdentifier` | string | the name of the documents folder |
        /// | `CFBundleName` | string | reported with each session |
        /// | `CFBundleShortVersionString` | string, such as "1.0" | reported with each session |
        /// | `CFBundleVersion` | string, such as "1" | reported with each session |
        /// | `NSLocationAlwaysUsageDescription` | any | present: location is used in the background too |
        /// | `UIBackgroundModes` | array of strings | containing "location": updates in the background |
        Dictionary infoDictionary = {};
        /// The folder of the application's resource files. Empty: the folder of the executable.
        std::string resourceFolder = {};
        /// The folder of the library's files. Empty: a folder with the name of the bundle identifier, or of the
        /// executable if there is none, in `$STATE_DIRECTORY`, or else `$XDG_DATA_HOME`, or else `~/.local/share`.
        std::string documentsFolder = {};
        /// The queue of the host's own main loop. Null: a loop that the host runs with `run()` or polls with `poll()`.
        std::shared_ptr<DispatchQueue> mainQueue = nullptr;
        /// The certificates that servers are verified with: a PEM file, a folder in OpenSSL's layout. Both empty: the
        /// places named by `SSL_CERT_FILE` and `SSL_CERT_DIR`, else those of the common distributions.
        std::string certificateFile = {}, certificateFolder = {};
        /// The proxy for all requests, as a URL such as "http://proxy.example:3128" or "socks5h://127.0.0.1:1080".
        /// Empty: no proxy. `nullopt`: the proxy that the environment names, as libcurl reads it ("http_proxy",
        /// "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", except for the hosts of "no_proxy" or "NO_PROXY").
        std::optional<std::string> proxy = std::nullopt;
        /// Requests a token from the host's push transport. Main queue. May be empty.
        std::function<void()> registerForRemoteNotifications = nullptr;
        /// Asks the host to wake the application for a background fetch at most once per this many seconds. Main queue.
        /// Empty: background refresh is reported as restricted.
        std::function<void(TimeInterval)> setMinimumBackgroundFetchInterval = nullptr;
        /// Displays a local notification that is due, once each. Includes notifications scheduled by an earlier
        /// process, and those that became due while no process ran. When the user opens it, the host calls
        /// `Vorlane::didReceiveLocalNotification()`. Main queue. Empty: no notification is displayed.
        std::function<void(const UILocalNotification&)> deliverLocalNotification = nullptr;
        /// Opens a URL. `UIApplicationOpenSettingsURLString` stands for the page with the application's permissions.
        /// Main queue. Empty: no URL is opened.
        std::function<void(const NSURL&)> openURL = nullptr;
        /// Asks the user for permission to show notifications and reports the answer, for example
        /// `AlwaysAllowedUserNotificationCenter`. Null: the permission is not determined, and requests fail.
        std::shared_ptr<UNUserNotificationCenter> userNotificationCenter = nullptr;
        /// The source of positions and beacon advertisements; the platform derives region events from them. Null: there
        /// are no positions, and the permission is not determined.
        std::shared_ptr<LocationBackEnd> locationBackEnd = nullptr;
    };

    LinuxPlatform();
    explicit LinuxPlatform(Options options);
    /// Stops the platform as `Platform::shutdown()` does.
    ~LinuxPlatform() override;

    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    // These operations do nothing if the host brought its own main queue, or after a shutdown. The thread that calls
    // one becomes the main thread. One thread at a time.

    /// Runs the main queue until `stopRunning()`. A stop that was requested while nothing ran ends the next run at
    /// once.
    void run();

    /// Like `run()`, for at most `seconds`.
    void runFor(TimeInterval seconds);

    /// Runs the main queue until no background task is open and no task of the queue is due, for at most `timeout`
    /// seconds or until `stopRunning()`. Each request holds a background task until it is answered, so this is how a
    /// program waits for its requests before it exits. Returns whether no background task is open.
    bool runUntilIdle(TimeInterval timeout);

    /// Runs the tasks of the main queue that are due, without waiting. Tasks that they post may be left for the next
    /// call. Returns how many tasks ran; 0 means that none is due.
    std::size_t poll();

    /// Ends the current run after the task that is running. Any thread.
    void stopRunning();

    /// Returns 12.0.
    double systemVersion() const override;

    /// Returns the system's clock.
    const Clock& clock() const override;

    std::shared_ptr<DispatchQueue> mainQueue() override;
    /// Makes a queue on its own thread, which the first task starts.
    std::shared_ptr<DispatchQueue> makeSerialQueue(const std::string& label) override;

    std::string documentsFolder() const override;
    std::optional<double> documentsCreationDate() const override;

    /// Makes a session over libcurl on its own thread, which the first request starts.
    std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& configuration) override;
    /// The first call reads the local notifications scheduled by an earlier process from
    /// "VLScheduledNotifications.plist" in the documents folder.
    std::shared_ptr<UIApplication> application() override;
    std::shared_ptr<UIDevice> device() override;
    std::shared_ptr<NSNotificationCenter> notificationCenter() override;
    std::shared_ptr<NSBundle> mainBundle() override;
    std::shared_ptr<UNUserNotificationCenter> userNotificationCenter() override;
    /// The first call reads the regions monitored by an earlier process from "VLMonitoredRegions.plist" in the
    /// documents folder.
    std::shared_ptr<CLLocationManager> locationManager() override;

    /// Makes a handle on the system journal.
    std::shared_ptr<OSLog> makeOSLog(const std::string& subsystem, const std::string& category) override;
    /// Writes the line to standard error in one piece.
    void NSLog(const std::string& line) override;

protected:
    void stop() override;

private:
    struct State;
    const std::unique_ptr<State> state_;
};

/// Makes the platform of a host that has installed none: a `LinuxPlatform` without options.
std::shared_ptr<Platform> makeDefaultPlatform();

}  // namespace vorlane
