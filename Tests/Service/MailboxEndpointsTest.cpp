#include <cstdint>
#include <string>
#include <tuple>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSString+VLHTML.h"
#include "Categories/NSString+VLHash.h"
#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

constexpr const char* kMailbox = "/K/T/rich/mailbox";

class MailboxEndpointsTest : public ServiceTest {
protected:
    /// Sends a message to the user T of the app K and returns its id.
    Value send(Dictionary message) const {
        message.emplace("appKey", "K");
        message.emplace("trackingId", "T");
        message.emplace("subject", "Hello");
        const auto answer = client().postJSON("/_admin/messages", Value(message));
        EXPECT_EQ(answer.status, 201) << answer.body;
        return answer.json()["id"];
    }

    Value state(const std::string& hash = "none", const std::string& mailbox = kMailbox) const {
        const auto answer = client().get(mailbox + "?stateHash=" + hash);
        EXPECT_EQ(answer.status, 200) << answer.body;
        return answer.json();
    }

    static std::string target(const std::string& id) { return std::string(kMailbox) + "/messages/" + id; }
    Value message(const std::string& id) const { return client().get(target(id)).json(); }
    ServiceAnswer change(const std::string& id, const Value& body) const { return client().put(target(id), body); }

    static Value answerWith(bool isComplete, const std::string& hashedText, const Value& notification) {
        return {{"synchronisation_complete", isComplete},
                {"state_hash", vl_md5(hashedText)},
                {"notification", notification}};
    }
};

TEST_F(MailboxEndpointsTest, EmptyMailboxesHaveTheHashOfAnEmptyList) {
    const std::string text = R"({"notification":[]})";
    EXPECT_EQ(state(), answerWith(false, text, Value::array()));
    EXPECT_EQ(state(vl_md5(text)), answerWith(true, text, Value::array()));
}

TEST_F(MailboxEndpointsTest, StatesAreHashedInTheOrderOfTheApp) {
    for (const std::uint64_t id : {std::uint64_t{2}, UINT64_MAX, std::uint64_t{10}, std::uint64_t{1} << 63U})
        send({{"id", id}});
    expectOK(change("10", {{"read", true}}));
    const std::string text = R"({"notification":[{"id":10,"read":1},{"id":2,"read":0},)"
                             R"({"id":18446744073709551615,"read":0},{"id":9223372036854775808,"read":0}]})";
    const Value notification = {{{"id", 10}, {"read", 1}},
                                {{"id", 2}, {"read", 0}},
                                {{"id", UINT64_MAX}, {"read", 0}},
                                {{"id", std::uint64_t{1} << 63U}, {"read", 0}}};
    EXPECT_EQ(state(vl_md5(text + " ")), answerWith(false, text, notification));
    EXPECT_EQ(state(vl_md5(text)), answerWith(true, text, notification));
}

TEST_F(MailboxEndpointsTest, StateRequestsNeedAHash) {
    expectError(client().get(kMailbox), 400, "the query has no \"stateHash\"");
}

TEST_F(MailboxEndpointsTest, MessagesHaveAllTheirFields) {
    send({{"id", 7},
          {"subject", "Sale"},
          {"html", "<b>Now</b>"},
          {"label", "shop"},
          {"link", "https://shop.example/"},
          {"phash", "p7"},
          {"backgroundColor", "#112233"},
          {"foregroundColor", "#FFEEDD"},
          {"cardUrl", "https://shop.example/card.png"},
          {"metadata", Dictionary{{"a", Array{1, nullptr}}}},
          {"created", 1700000000},
          {"end", 1700000000.5}});
    EXPECT_EQ(message("7"), Value({{"id", 7},
                                   {"sline", "Sale"},
                                   {"content", "%3Cb%3ENow%3C%2Fb%3E"},
                                   {"blbl", "shop"},
                                   {"burl", "https://shop.example/"},
                                   {"phash", "p7"},
                                   {"read", 0},
                                   {"created", 1700000000},
                                   {"end", 1700000000.5},
                                   {"card_url", "https://shop.example/card.png"},
                                   {"bg_color", "#112233"},
                                   {"fg_color", "#FFEEDD"},
                                   {"meta_data", {{"a", {1, nullptr}}}}}));
}

TEST_F(MailboxEndpointsTest, AbsentFieldsAreNullInAMessage) {
    send({{"created", 1700000000}});
    EXPECT_EQ(message("1"), Value({{"id", 1},
                                   {"sline", "Hello"},
                                   {"content", ""},
                                   {"blbl", nullptr},
                                   {"burl", nullptr},
                                   {"phash", "message-1"},
                                   {"read", 0},
                                   {"created", 1700000000},
                                   {"end", 1700000000 + 30 * 86400},
                                   {"card_url", nullptr},
                                   {"bg_color", nullptr},
                                   {"fg_color", nullptr},
                                   {"meta_data", nullptr}}));
}

TEST_F(MailboxEndpointsTest, HTMLArrivesUnchanged) {
    const std::string html = "<p title=\"a&quot;b\">50% &lt; 100%25 &amp;amp; Größe \xF0\x9F\x98\x80 +</p>\n";
    send({{"html", html}});
    const auto content = message("1")["content"].get<std::string>();
    EXPECT_EQ(vl_unescapeHTML(stringByRemovingPercentEncoding(content).value()), html);
}

TEST_F(MailboxEndpointsTest, ReadMessagesStayRead) {
    send({});
    expectOK(change("1", {{"read", true}}));
    expectOK(change("1", {{"read", true}}));
    EXPECT_EQ(message("1")["read"], 1);
    EXPECT_EQ(state()["notification"], Value::array({{{"id", 1}, {"read", 1}}}));
    EXPECT_EQ(listOf("messages")[0]["read"], true);
}

TEST_F(MailboxEndpointsTest, DeletedMessagesMayBeDeletedAgain) {
    send({});
    expectOK(change("1", {{"deleted", true}}));
    expectError(client().get(target("1")), 404, "there is no such message");
    EXPECT_EQ(state()["notification"], Value::array());
    EXPECT_EQ(listOf("messages")[0]["deleted"], true);
    expectOK(change("1", {{"deleted", true}}));
    expectOK(change("1", {{"read", true}}));
    EXPECT_EQ(state()["notification"], Value::array());
}

TEST_F(MailboxEndpointsTest, OneRequestMayMakeBothChanges) {
    send({});
    expectOK(change("1", {{"read", true}, {"deleted", true}}));
    EXPECT_EQ(listOf("messages")[0]["read"], true);
    EXPECT_EQ(listOf("messages")[0]["deleted"], true);
}

TEST_F(MailboxEndpointsTest, InvalidChangesAreRefused) {
    send({});
    expectError(change("1", Value::object()), 400, "the body has neither \"read\" nor \"deleted\"");
    for (const Value& value : {Value(false), Value(1), Value("true"), Value(nullptr)}) {
        expectError(change("1", {{"read", value}}), 400, "\"read\" can only be set to true");
        expectError(change("1", {{"deleted", value}}), 400, "\"deleted\" can only be set to true");
    }
    EXPECT_EQ(change("1", Value::array()).status, 400);
    expectError(client().post(target("1"), "{}", "application/json"), 405, "the endpoint does not support this method");
    EXPECT_EQ(client().options(target("1")).headers.at("Allow"), "GET, PUT");
    EXPECT_EQ(state()["notification"], Value::array({{{"id", 1}, {"read", 0}}}));
}

TEST_F(MailboxEndpointsTest, MessagesOfOtherUsersAreNotFound) {
    send({});
    for (const std::string id : {"2", "0", "-1", "1x", "x", "+1", "18446744073709551616", "18446744073709551617"}) {
        expectError(client().get(target(id)), 404, "there is no such message");
        expectError(change(id, {{"read", true}}), 404, "there is no such message");
    }
    for (const std::string mailbox : {"/K/U", "/L/T"})
        expectError(client().get(mailbox + "/rich/mailbox/messages/1"), 404, "there is no such message");
    EXPECT_EQ(message("1")["read"], 0);
}

TEST_F(MailboxEndpointsTest, EachUserHasAMailbox) {
    client().get("/config/application/ios/K?trackingId=T");
    client().get("/config/application/ios/K?trackingId=U");
    client().get("/config/application/ios/L?trackingId=T");
    client().postJSON("/_admin/messages", {{"appKey", "K"}, {"all", true}, {"subject", "To all"}});
    expectOK(change("1", {{"deleted", true}}));
    EXPECT_EQ(state()["notification"], Value::array());
    EXPECT_EQ(state("none", "/K/U/rich/mailbox")["notification"], Value::array({{{"id", 1}, {"read", 0}}}));
    EXPECT_EQ(state("none", "/L/T/rich/mailbox")["notification"], Value::array());
}

TEST_F(MailboxEndpointsTest, TrackingIdsMayContainSlashesAndBlanks) {
    send({{"trackingId", "a b/c"}});
    EXPECT_EQ(state("none", "/K/a%20b/c/rich/mailbox")["notification"].size(), 1u);
    EXPECT_EQ(client().get("/K/a%20b/c/rich/mailbox/messages/1").json()["sline"], "Hello");
    const auto record = lastRecord();
    EXPECT_EQ(record["endpoint"], "inboxMessage");
    EXPECT_EQ(record["appKey"], "K");
    EXPECT_EQ(record["trackingId"], "a b/c");
}

TEST_F(MailboxEndpointsTest, StateRequestsMakeTheirUserKnown) {
    state();
    const auto answer = client().postJSON("/_admin/messages", {{"appKey", "K"}, {"all", true}, {"subject", "To all"}});
    EXPECT_EQ(answer.json()["recipients"], 1);
}

TEST_F(MailboxEndpointsTest, CardImagesAreServedUnchanged) {
    send({{"image", "89504e470d0a1a0a00ff"}});
    send({{"image", "FFD8FF00"}, {"cardUrl", "https://shop.example/card.png"}});
    const auto origin = "http://127.0.0.1:" + std::to_string(port());
    for (const auto& [id, type, bytes] : {std::tuple("1", "image/png", std::string("\x89PNG\r\n\x1a\n\x00\xff", 10)),
                                          std::tuple("2", "image/jpeg", std::string("\xff\xd8\xff\x00", 4))}) {
        const auto url = message(id)["card_url"].get<std::string>();
        ASSERT_TRUE(url.starts_with(origin + "/card-images/")) << url;
        const auto answer = client().get(url.substr(origin.size()));
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.headers.at("Content-Type"), type);
        EXPECT_EQ(answer.body, bytes);
    }
    expectError(client().get("/card-images/none.png"), 404, "there is no such image");
    EXPECT_EQ(lastRecord()["endpoint"], "cardImage");
}

TEST_F(MailboxEndpointsTest, FaultsApplyToEachMailboxEndpoint) {
    send({{"image", "ffd8ff"}});
    const auto image = "/card-images/" + listOf("messages")[0]["image"].get<std::string>();
    for (const std::string endpoint : {"inboxState", "inboxMessage", "updateInboxMessage", "cardImage"})
        addFault({{"endpoint", endpoint}, {"kind", "status"}, {"status", 503}, {"count", 1}});
    expectError(client().get(std::string(kMailbox) + "?stateHash=x"), 503, "a scripted fault");
    expectError(client().get(target("1")), 503, "a scripted fault");
    expectError(change("1", {{"deleted", true}}), 503, "a scripted fault");
    expectError(client().get(image), 503, "a scripted fault");
    EXPECT_EQ(state()["notification"], Value::array({{{"id", 1}, {"read", 0}}}));
    EXPECT_EQ(client().get(image).status, 200);

    addFault({{"endpoint", "updateInboxMessage"}, {"kind", "truncate"}, {"count", 1}});
    EXPECT_EQ(change("1", {{"read", true}}).status, 0);
    EXPECT_EQ(message("1")["read"], 1);
    addFault({{"endpoint", "inboxState"}, {"kind", "body"}, {"body", {{"notification", 5}}}, {"count", 1}});
    EXPECT_EQ(state(), Value({{"notification", 5}}));
}

}  // namespace
}  // namespace vorlane::service
