// The first program of a host: starts the library, reports an event and a tag, ends its session, and leaves.
#include <cstdlib>
#include <iostream>

#include <vorlane/Platform/Linux/LinuxPlatform.h>
#include <vorlane/Vorlane.h>

using namespace vorlane;

/// Shows the library's log, and so each request and its answer. By itself the log goes to the system journal.
class ConsoleLogger : public VLLogger {
    void logMessage(const std::string& message, const std::optional<Value>&, VLLogLevel level) override {
        std::clog << VLLog::logLevelToString(level) << "  " << message << std::endl;
    }
};

int main() {
    // The platform first, before any use of Vorlane. Its Info dictionary says who the application is.
    auto platform = std::make_shared<LinuxPlatform>(LinuxPlatform::Options{
        .infoDictionary = {{"CFBundleIdentifier", "example.first-app"}, {"CFBundleShortVersionString", "1.0"}}});
    Platform::install(platform);
    VLLog::sharedInstance().addLogger(std::make_shared<ConsoleLogger>());

    // An example can be pointed at a local service; a real application leaves the production endpoints in place.
    if (const char* origin = std::getenv("VORLANE_SERVICE_ORIGIN")) {
        const auto url = NSURL::URLWithString(origin);
        if (!url) return std::cerr << "VORLANE_SERVICE_ORIGIN is not a URL: " << origin << std::endl, EXIT_FAILURE;
        Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*url));
    }

    // Start once, at launch, then report the application's states: becoming active starts a session.
    auto options = VLSDKOptions::developmentOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");  // your project's key, 32 characters
    const auto application = platform->application();
    Vorlane::initialiseSDKWithApplication(application, std::nullopt, options);
    application->didBecomeActive();
    std::cout << "device id: " << Vorlane::deviceId() << std::endl;

    Vorlane::registerEventWithType("Purchase", "Coffee");
    int status = EXIT_FAILURE;
    Vorlane::setTag("favourite_drink", "coffee", VLTagType::String, [&](std::optional<NSError> error) {
        std::cout << "tag: " << (error ? error->localizedDescription() : "set") << std::endl;
        status = error ? EXIT_FAILURE : EXIT_SUCCESS;
    });

    // Going to the background ends the session. Each request holds a background task until it is answered.
    application->didEnterBackground();
    while (!application->backgroundTasks().empty()) platform->runFor(0.05);
    Platform::shutdown();
    std::cout << "session ended, every request was answered or has failed" << std::endl;
    return status;
}
