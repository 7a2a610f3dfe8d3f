#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Simulator/Support/PhoneProcess.h"
#include "Simulator/Support/ServiceProcess.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane {

/// A fixture with a running service and a folder for phones. Both programs are real processes.
class EndToEndTest : public ::testing::Test {
protected:
    static std::string appKey() { return "0123456789abcdef0123456789abcdef"; }
    std::string path(const std::string& name) const { return folder.path(name); }

    /// Starts a phone that uses the service, with a virtual clock and the files of the previous phone.
    void startPhone(const std::vector<std::string>& further = {}) {
        std::vector<std::string> options{"--data-dir",     path("phone"), "--service",
                                         service.origin(), "--clock",     "virtual"};
        options.insert(options.end(), further.begin(), further.end());
        phone = std::make_unique<support::PhoneProcess>(VORLANE_PHONE, options);
    }

    void launch() {
        phone->perform({{"do", "launch"}, {"preset", "development"}, {"options", Dictionary{{"appKey", appKey()}}}});
    }
    void state(const std::string& to) { phone->perform({{"do", "state"}, {"to", to}}); }

    /// Settles and returns the payload of the last request to an endpoint.
    Value lastPayload(const std::string& endpoint) {
        phone->settle();
        const auto requests = service.requests(endpoint);
        return requests.empty() ? Value() : requests.back()["payload"];
    }

    /// The arguments of the last completion handler.
    Value lastResult() {
        phone->settle();
        const auto results = phone->events("result");
        return results.empty() ? Value() : results.back().at("values");
    }

    int countLog(const std::string& start) const {
        int count = 0;
        for (const auto& event : phone->events("log")) {
            count += event.at("message").get<std::string>().starts_with(start) ? 1 : 0;
        }
        return count;
    }

    // Outlives the programs that write to it.
    const TemporaryFolder folder;
    support::ServiceProcess service{VORLANE_SERVICE};
    std::unique_ptr<support::PhoneProcess> phone;
};

}  // namespace vorlane
