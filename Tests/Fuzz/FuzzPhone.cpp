#include "Tests/Fuzz/FuzzPhone.h"

#include <filesystem>

#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::fuzz {

const std::string& FuzzPhone::folder() {
    static const TemporaryFolder folder;
    return folder.path();
}

FuzzPhone::FuzzPhone() {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder(), ignored)) {
        std::filesystem::remove_all(entry, ignored);
    }
    phone_ = std::make_shared<SimulatedPhone>(SimulatedPhone::Options{.documentsFolder = folder()});
    Platform::install(phone_);
}

FuzzPhone::~FuzzPhone() {
    Platform::shutdown();
    Platform::install(nullptr);
}

void FuzzPhone::start(const std::optional<Dictionary>& launchOptions) {
    VLSDKOptions options;
    options.setAppKey(kAppKey);
    phone_->simulatedUserNotificationCenter();
    Vorlane::initialiseSDKWithApplication(phone_->application(), launchOptions, options);
    phone_->application()->didBecomeActive();
    phone_->settle();
}

}  // namespace vorlane::fuzz
