// A test of a host: the library on the simulated phone, with a scripted network.
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
    auto options = VLSDKOptions::defaultOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");
    Vorlane::initialiseSDKWithApplication(phone->application(), std::nullopt, options);
    Vorlane::registerEventWithType("Purchase", "Coffee");
    phone->settle();

    const auto requests = phone->session().requests("register_app_event");
    const bool isRight = requests.size() == 1 && requests[0].payload()["event_label"] == "Coffee";
    if (!isRight) std::cerr << requests.size() << " event requests" << std::endl;
    Platform::shutdown();
    return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
