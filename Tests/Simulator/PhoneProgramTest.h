#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Simulator/Support/PhoneProcess.h"
#include "Tests/Simulator/SilentServer.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

/// A fixture with a phone as a process, whose requests reach a server that never answers.
class PhoneProgramTest : public TemporaryFolderTest {
protected:
    PhoneProgramTest() { startPhone(); }

    static std::string appKey() { return "0123456789abcdef0123456789abcdef"; }

    void startPhone(const std::vector<std::string>& further = {"--clock", "virtual"}) {
        std::vector<std::string> options{"--data-dir", path("phone"), "--service", server.origin()};
        options.insert(options.end(), further.begin(), further.end());
        phone = std::make_unique<support::PhoneProcess>(VORLANE_PHONE, options);
    }

    void launch(Dictionary further = {}) {
        further.insert({{"do", "launch"}, {"preset", "development"}, {"options", Dictionary{{"appKey", appKey()}}}});
        phone->perform(std::move(further));
    }

    Value query(const std::string& what) { return phone->perform({{"do", "query"}, {"what", what}}); }

    std::vector<std::string> messages() const {
        std::vector<std::string> found;
        for (const auto& event : phone->events("log")) found.push_back(event.at("message").get<std::string>());
        return found;
    }
    /// The number of log lines with this start since the last `takeEvents()`.
    long countLog(const std::string& start) const {
        const auto all = messages();
        return std::count_if(all.begin(), all.end(), [&](const auto& message) { return message.starts_with(start); });
    }

    SilentServer server;
    std::unique_ptr<support::PhoneProcess> phone;
};

}  // namespace vorlane
