// The first program of a host: starts the library, sends two events and a tag, ends its session, and leaves in order.
//
//   first-app              prints what happens, and the log without requests that succeed
//   first-app --verbose    prints every line of the log: each request and its answer
//
// VORLANE_SERVICE_ORIGIN=http://127.0.0.1:8780 points it at a local service. A real application uses the production
// endpoints, which are the default.
#include <cstdlib>
#include <iostream>
#include <string_view>

#include <vorlane/Platform/Linux/LinuxPlatform.h>
#include <vorlane/VLConsoleLogger.h>
#include <vorlane/Vorlane.h>

using namespace vorlane;

static bool useServiceOf(const char* origin) {
    const auto url = NSURL::URLWithString(origin);
    if (!url) return false;
    Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*url));
    return true;
}

int main(int argc, char** argv) {
    const bool isVerbose = argc > 1 && std::string_view(argv[1]) == "--verbose";

    // 1. The platform, before any use of Vorlane. Its Info dictionary identifies the application.
    const auto platform = std::make_shared<LinuxPlatform>(LinuxPlatform::Options{
        .infoDictionary = {{"CFBundleIdentifier", "example.first-app"}, {"CFBundleShortVersionString", "1.0"}}});
    Platform::install(platform);
    // Without a sink of its own a program's log is in the system journal: journalctl -t first-app
    VLLog::sharedInstance().addLogger(std::make_shared<VLConsoleLogger>());
    if (const char* origin = std::getenv("VORLANE_SERVICE_ORIGIN"); origin && !useServiceOf(origin)) {
        std::cerr << "VORLANE_SERVICE_ORIGIN is not a URL: " << origin << std::endl;
        return EXIT_FAILURE;
    }

    // 2. Start-up, once. Then the application reports its states: becoming active starts a session.
    auto options = isVerbose ? VLSDKOptions::developmentOptions() : VLSDKOptions::defaultOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");  // your project's key, 32 characters
    const auto application = platform->application();
    Vorlane::initialiseSDKWithApplication(application, std::nullopt, options);
    application->didBecomeActive();
    std::cout << "device id: " << Vorlane::deviceId() << std::endl;

    // 3. Events, with a label or with data, and a tag. A completion handler runs on the main queue.
    Vorlane::registerEventWithType("Purchase", "Coffee");
    Vorlane::registerEventWithType("Order", {{"drink", "coffee"}, {"cups", 2}, {"extras", {{"milk", true}}}});
    bool isTagSet = false;
    Vorlane::setTag("favourite_drink", "coffee", VLTagType::String, [&](std::optional<NSError> error) {
        isTagSet = !error;
        std::cout << "tag: " << (error ? error->localizedDescription() : "set") << std::endl;
    });

    // 4. Going to the background ends the session. Each request holds a background task until it has ended, so the
    //    program runs the main queue until there is none, here for at most 30 seconds.
    application->didEnterBackground();
    const bool isIdle = platform->runUntilIdle(30.0);
    std::cout << (isIdle ? "every request has ended" : "some requests are still under way") << std::endl;

    // 5. Stops the library's threads. No handler runs after this.
    Platform::shutdown();
    if (!isTagSet) std::cout << "the service was not reached; --verbose shows each request" << std::endl;
    return isTagSet && isIdle ? EXIT_SUCCESS : EXIT_FAILURE;
}
