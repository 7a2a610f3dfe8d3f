// A test of a host: the library on the simulated phone, with a scripted network.
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>

#include <vorlane/Simulator/Platform/SimulatedPhone.h>
#include <vorlane/Vorlane.h>

using namespace vorlane;

int main() {
    const auto phone = std::make_shared<SimulatedPhone>();
    Platform::install(phone);
    phone->addInboxMessage({.subject = "Hello", .htmlContent = "<p>Welcome</p>"});
    auto options = VLSDKOptions::defaultOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");
    Vorlane::initialiseSDKWithApplication(phone->application(), std::nullopt, options);
    Vorlane::registerEventWithType("Purchase", "Coffee");
    std::size_t messages = 0;
    Vorlane::getInboxMessagesWithCompletionHandler(
        [&messages](const auto& list, std::size_t /*unreadCount*/) { messages = list.size(); });
    phone->settle();

    const auto requests = phone->session().requests("register_app_event");
    const bool isRight = requests.size() == 1 && requests[0].payload()["event_label"] == "Coffee" && messages == 1;
    if (!isRight) std::cerr << requests.size() << " event requests, " << messages << " messages" << std::endl;
    Platform::shutdown();
    return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
