#pragma once

#include <memory>

#include "Public/Vorlane.h"
#include "Simulator/Platform/SimulatedPhone.h"

namespace vorlane::fuzz {

/// A started library on a simulated phone with a scripted network, gone at the end of the scope.
class FuzzPhone {
public:
    static constexpr const char* kAppKey = "0123456789abcdef0123456789abcdef";

    FuzzPhone();
    ~FuzzPhone();
    FuzzPhone(const FuzzPhone&) = delete;
    FuzzPhone& operator=(const FuzzPhone&) = delete;

    void start(const std::optional<Dictionary>& launchOptions = std::nullopt);

    SimulatedPhone& phone() { return *phone_; }
    ScriptedURLSession& session() { return phone_->session(); }

    /// The folder of this process, emptied for each phone: making one anew each time costs more than the input.
    static const std::string& folder();

private:
    std::shared_ptr<SimulatedPhone> phone_;
};

}  // namespace vorlane::fuzz
