#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/EngagementService.h"
#include "Simulator/Service/Http/ServiceServer.h"
#include "Tests/Service/ServiceClient.h"

namespace vorlane::service {

/// A fixture with a service in this process and an HTTP client.
class ServiceTest : public ::testing::Test {
protected:
    explicit ServiceTest(const ServiceOptions& options = {})
        : server_(std::make_unique<ServiceServer>(options)), client_(server_->port()) {}

    ServiceServer& server() { return *server_; }
    const ServiceClient& client() const { return client_; }
    int port() const { return server_->port(); }
    void stopServer() { server_.reset(); }

    /// Returns an admin list by name, with a query: listOf("tags", "?appKey=K").
    Value listOf(const std::string& name, const std::string& query = "") const {
        const auto answer = client_.get("/_admin/" + name + query);
        EXPECT_EQ(answer.status, 200) << answer.body;
        const auto json = answer.json();
        return json.is_object() && json.contains(name) ? json[name] : Value();
    }

    /// Returns the record of the last request, or null without one.
    Value lastRecord() const {
        const auto records = listOf("requests");
        return records.empty() ? Value() : records.back();
    }

    void addFault(const Value& fault) const {
        const auto answer = client_.postJSON("/_admin/faults", fault);
        EXPECT_EQ(answer.status, 201) << answer.body;
    }

    static void expectError(const ServiceAnswer& answer, int status, const std::string& text) {
        EXPECT_EQ(answer.status, status);
        EXPECT_EQ(answer.json(), Value({{"error", text}}));
    }

    static void expectOK(const ServiceAnswer& answer) {
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.json(), Value({{"result", "ok"}}));
    }

private:
    std::unique_ptr<ServiceServer> server_;
    const ServiceClient client_;
};

}  // namespace vorlane::service
