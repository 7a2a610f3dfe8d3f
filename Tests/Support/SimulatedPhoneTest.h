#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Public/VLLog.h"
#include "Simulator/Platform/RecordingLogger.h"
#include "Simulator/Platform/SimulatedPhone.h"

namespace vorlane {

/// A fixture with a simulated phone, installed as the platform: virtual clock, scripted network, recorded log.
class SimulatedPhoneTest : public ::testing::Test {
protected:
    explicit SimulatedPhoneTest(SimulatedPhone::Options options = {})
        : phone_(std::make_shared<SimulatedPhone>(options)) {
        Platform::install(phone_);
        VLLog::sharedInstance().setLogLevel(VLLogLevel::Debug);
        VLLog::sharedInstance().addLogger(logger_);
    }

    ~SimulatedPhoneTest() override { Platform::install(nullptr); }

    /// Runs open handlers before the fixture's members, which they may write to, are destroyed.
    void TearDown() override { Platform::shutdown(); }

    SimulatedPhone& phone() { return *phone_; }
    ScriptedURLSession& session() { return phone_->session(); }
    std::string documentsPath(const std::string& name) const { return phone_->documentsFolder() + "/" + name; }

    /// Waits for the log's queue, and returns the recorded lines.
    RecordingLogger& log() {
        phone_->settle();
        return *logger_;
    }

private:
    std::shared_ptr<SimulatedPhone> phone_;
    std::shared_ptr<RecordingLogger> logger_ = std::make_shared<RecordingLogger>();
};

}  // namespace vorlane
