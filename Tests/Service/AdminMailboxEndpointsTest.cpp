#include <cstdint>
#include <string>

#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

constexpr const char* kMessages = "/_admin/messages";

class AdminMailboxEndpointsTest : public ServiceTest {
protected:
    static Value hello(const std::string& trackingId = "T", const std::string& appKey = "K") {
        return {{"appKey", appKey}, {"trackingId", trackingId}, {"subject", "Hello"}};
    }

    /// The smallest valid message with one more field.
    static Value helloWith(const std::string& key, const Value& value) {
        auto message = hello();
        message[key] = value;
        return message;
    }

    void send(const Value& message) const {
        const auto answer = client().postJSON(kMessages, message);
        EXPECT_EQ(answer.status, 201) << answer.body;
    }

    void expectRefusal(const Value& message, const std::string& text) const {
        expectError(client().postJSON(kMessages, message), 400, text);
    }

    Value ids(const std::string& query = "") const {
        Value ids = Value::array();
        for (const auto& message : listOf("messages", query)) ids.push_back(message["id"]);
        return ids;
    }
};

TEST_F(AdminMailboxEndpointsTest, SendingReturnsIdPhashAndRecipients) {
    auto answer = client().postJSON(kMessages, hello());
    EXPECT_EQ(answer.status, 201);
    EXPECT_EQ(answer.json(), Value({{"id", 1}, {"phash", "message-1"}, {"recipients", 1}}));
    auto chosen = helloWith("id", UINT64_MAX);
    chosen["phash"] = "own";
    EXPECT_EQ(client().postJSON(kMessages, chosen).json(),
              Value({{"id", UINT64_MAX}, {"phash", "own"}, {"recipients", 1}}));
}

TEST_F(AdminMailboxEndpointsTest, MessagesToAllReachEveryKnownUser) {
    for (const std::string user : {"T", "U"}) client().get("/config/application/ios/K?trackingId=" + user);
    client().get("/config/application/ios/L?trackingId=V");
    const auto answer = client().postJSON(kMessages, {{"appKey", "K"}, {"all", true}, {"subject", "To all"}});
    EXPECT_EQ(answer.json()["recipients"], 2);
    EXPECT_EQ(listOf("messages").size(), 2u);
    EXPECT_EQ(listOf("messages")[0]["trackingId"], "T");
    EXPECT_EQ(listOf("messages")[1]["trackingId"], "U");
    EXPECT_EQ(client().postJSON(kMessages, {{"appKey", "M"}, {"all", true}, {"subject", "s"}}).json()["recipients"], 0);
}

TEST_F(AdminMailboxEndpointsTest, MessagesAreListedCompletely) {
    send({{"appKey", "K"},
          {"trackingId", "T"},
          {"id", 9},
          {"subject", "Sale"},
          {"html", "<b>&amp;</b>"},
          {"label", "shop"},
          {"link", "https://shop.example/"},
          {"phash", "p"},
          {"backgroundColor", "#112233"},
          {"foregroundColor", "no colour"},
          {"cardUrl", "https://shop.example/card.png"},
          {"image", "ffd8ff"},
          {"metadata", {{"a", 1}}},
          {"created", 1700000000},
          {"end", 1700000001.25}});
    const auto image = listOf("messages")[0]["image"].get<std::string>();
    EXPECT_TRUE(image.ends_with(".jpg"));
    EXPECT_EQ(listOf("messages"), Value::array({{{"appKey", "K"},
                                                 {"trackingId", "T"},
                                                 {"id", 9},
                                                 {"subject", "Sale"},
                                                 {"html", "<b>&amp;</b>"},
                                                 {"label", "shop"},
                                                 {"link", "https://shop.example/"},
                                                 {"phash", "p"},
                                                 {"backgroundColor", "#112233"},
                                                 {"foregroundColor", "no colour"},
                                                 {"cardUrl", "https://shop.example/card.png"},
                                                 {"image", image},
                                                 {"metadata", {{"a", 1}}},
                                                 {"created", 1700000000},
                                                 {"end", 1700000001.25},
                                                 {"read", false},
                                                 {"deleted", false}}}));
}

TEST_F(AdminMailboxEndpointsTest, MessagesLastFor30DaysByDefault) {
    send(hello());
    const auto message = listOf("messages")[0];
    EXPECT_GT(message["created"].get<double>(), 1.7e9);
    EXPECT_EQ(message["end"].get<double>() - message["created"].get<double>(), 30.0 * 86400);
    send(helloWith("created", 0));
    EXPECT_EQ(listOf("messages")[1]["end"], 30 * 86400);
}

TEST_F(AdminMailboxEndpointsTest, NullCountsAsAbsent) {
    auto message = hello();
    for (const char* key : {"id", "html", "label", "link", "phash", "backgroundColor", "foregroundColor", "cardUrl",
                            "image", "metadata", "created", "end"})
        message[key] = nullptr;
    EXPECT_EQ(client().postJSON(kMessages, message).json()["phash"], "message-1");
}

TEST_F(AdminMailboxEndpointsTest, MessagesAreListedByUserAndId) {
    send(hello("U"));
    auto highest = hello();
    highest["id"] = UINT64_MAX;
    send(highest);
    auto third = hello();
    third["id"] = 3;
    send(third);
    send(hello("T", "L"));
    EXPECT_EQ(ids("?appKey=K"), Value({3, UINT64_MAX, 1}));
    EXPECT_EQ(ids("?trackingId=U"), Value::array({1}));
    EXPECT_EQ(ids("?appKey=L&trackingId=U"), Value::array());
    EXPECT_EQ(ids().size(), 4u);
}

TEST_F(AdminMailboxEndpointsTest, MessagesMayBeRemovedSinglyOrTogether) {
    for (const std::string user : {"T", "U", "V"}) client().get("/config/application/ios/K?trackingId=" + user);
    client().postJSON(kMessages, {{"appKey", "K"}, {"all", true}, {"subject", "To all"}});
    send(hello());
    send(helloWith("id", UINT64_MAX));
    expectOK(client().del("/_admin/messages?id=1&trackingId=V"));
    EXPECT_EQ(ids(), Value({1, 2, UINT64_MAX, 1}));
    expectOK(client().del("/_admin/messages?id=18446744073709551615"));
    expectError(client().del("/_admin/messages?id=18446744073709551615"), 404, "there is no such message");
    expectError(client().del("/_admin/messages?id=1&appKey=L"), 404, "there is no such message");
    expectOK(client().del("/_admin/messages?trackingId=T"));
    EXPECT_EQ(ids(), Value::array({1}));
    expectOK(client().del("/_admin/messages?trackingId=T"));
    expectOK(client().del(kMessages));
    EXPECT_EQ(ids(), Value::array());
}

TEST_F(AdminMailboxEndpointsTest, IdsOfRemovedMessagesAreNotReused) {
    send(hello());
    send(helloWith("id", 5));
    client().del(kMessages);
    EXPECT_EQ(client().postJSON(kMessages, hello()).json()["id"], 6);
    for (const int id : {1, 5, 6})
        expectError(client().postJSON(kMessages, helloWith("id", id)), 409, "the id was used before");
    EXPECT_EQ(ids(), Value::array({6}));
}

TEST_F(AdminMailboxEndpointsTest, ImagesLastAsLongAsTheirMessages) {
    send(helloWith("image", "ffd8ff"));
    send(helloWith("image", "FFD8FF"));
    const auto image = "/card-images/" + listOf("messages")[0]["image"].get<std::string>();
    expectOK(client().del("/_admin/messages?id=1"));
    EXPECT_EQ(client().get(image).status, 200);
    expectOK(client().del("/_admin/messages?id=2"));
    EXPECT_EQ(client().get(image).status, 404);
}

TEST_F(AdminMailboxEndpointsTest, ResetEmptiesTheMailboxes) {
    send(helloWith("image", "ffd8ff"));
    const auto image = "/card-images/" + listOf("messages")[0]["image"].get<std::string>();
    expectOK(client().post("/_admin/reset", "", "text/plain"));
    EXPECT_EQ(ids(), Value::array());
    EXPECT_EQ(client().get(image).status, 404);
    EXPECT_EQ(client().postJSON(kMessages, hello()).json()["id"], 1);
}

TEST_F(AdminMailboxEndpointsTest, InvalidMessagesAreRefused) {
    expectRefusal({{"trackingId", "T"}, {"subject", "s"}}, "\"appKey\" is missing, empty or not a string");
    expectRefusal({{"appKey", "K"}, {"subject", "s"}}, "\"trackingId\" is missing, empty or not a string");
    expectRefusal({{"appKey", "K"}, {"subject", "s"}, {"all", false}},
                  "\"trackingId\" is missing, empty or not a string");
    expectRefusal({{"appKey", "K"}, {"trackingId", "T"}}, "\"subject\" is missing, empty or not a string");
    expectRefusal(helloWith("all", true), "\"trackingId\" and \"all\" exclude each other");
    expectRefusal(helloWith("all", 1), "\"all\" is not a boolean");
    expectRefusal(helloWith("subjekt", "s"), "unknown name \"subjekt\"");
    for (const Value& id : {Value(-1), Value(1.5), Value("1"), Value(true), Value(1e30)})
        expectRefusal(helloWith("id", id), "\"id\" is not an integer from 0");
    for (const std::string key : {"html", "label", "link", "phash", "backgroundColor", "foregroundColor", "cardUrl"})
        expectRefusal(helloWith(key, 1), "\"" + key + "\" is not a string");
    for (const Value& metadata : {Value("{}"), Value::array(), Value(1)})
        expectRefusal(helloWith("metadata", metadata), "\"metadata\" is not an object");
    for (const std::string key : {"created", "end"}) {
        for (const Value& time : {Value(-1), Value("1"), Value(true), Value(253402300800)})
            expectRefusal(helloWith(key, time), "\"" + key + "\" is not a number from 0 to 253402300799");
    }
    for (const std::string image : {"8", "xx"})
        expectRefusal(helloWith("image", image), "\"image\" is not hexadecimal");
    expectRefusal(helloWith("image", 5), "\"image\" is missing, empty or not a string");
    expectRefusal(helloWith("image", "47494638"), "\"image\" is neither a PNG nor a JPEG");
    EXPECT_EQ(client().post(kMessages, "[]", "application/json").status, 400);
    EXPECT_EQ(ids(), Value::array());
}

TEST_F(AdminMailboxEndpointsTest, InvalidQueriesAreRefused) {
    expectError(client().get("/_admin/messages?user=T"), 400, "unknown name \"user\"");
    expectError(client().del("/_admin/messages?ids=1"), 400, "unknown name \"ids\"");
    for (const std::string id : {"x", "-1", "18446744073709551616", ""})
        expectError(client().del("/_admin/messages?id=" + id), 400,
                    "\"id\" is not a number from 0 to 18446744073709551615");
}

}  // namespace
}  // namespace vorlane::service
