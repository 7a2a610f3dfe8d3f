#include <fmt/format.h>

#include "Public/VLConstants.h"
#include "Tests/EndToEnd/InboxEndToEndTest.h"
#include "Tests/Inbox/TestDatabase.h"
#include "Tests/Inbox/TestImages.h"

namespace vorlane {

namespace {

class InboxTest : public InboxEndToEndTest {
protected:
    static std::string hexadecimal(const Data& data) {
        std::string text;
        for (const auto byte : data) text += fmt::format("{:02x}", byte);
        return text;
    }

    /// Loads the image of a message of the last list and returns the result.
    Value imageOf(std::uint64_t id) {
        phone->perform({{"do", "loadImage"}, {"messageId", id}});
        const auto values = lastResult();
        return values.is_array() && values.size() == 1 ? values[0] : Value("no result");
    }

    /// Starts a second phone of the same user.
    std::unique_ptr<support::PhoneProcess> startSecondPhone(const std::string& user) {
        auto second = std::make_unique<support::PhoneProcess>(
            VORLANE_PHONE, std::vector<std::string>{"--data-dir", path("second"), "--service", service.origin(),
                                                    "--clock", "virtual"});
        second->perform({{"do", "launch"}, {"preset", "development"}, {"options", Dictionary{{"appKey", appKey()}}}});
        second->call("setTrackingId:", {user});
        second->settle();
        return second;
    }
};

TEST_F(InboxTest, MessagesArriveUnchanged) {
    const std::string html = "<p title=\"a&quot;b\">50% &lt; 100%25 &amp;amp; Größe</p>";
    const auto id = sendMessage({{"id", UINT64_MAX},
                                 {"subject", "Sale"},
                                 {"html", html},
                                 {"label", "shop"},
                                 {"link", "https://shop.example/?a=%20"},
                                 {"phash", "p"},
                                 {"backgroundColor", "#112233"},
                                 {"foregroundColor", "#ffEEdd"},
                                 {"cardUrl", "https://shop.example/card.png"},
                                 {"metadata", Dictionary{{"a", Array{1, "b"}}}},
                                 {"created", kStart - 1},
                                 {"end", kStart + 1000.5}});
    const auto inbox = list();
    EXPECT_EQ(inbox.messages, Array{Value(Dictionary{{"messageId", id},
                                                     {"subject", "Sale"},
                                                     {"htmlContent", std::string(VIEWPORT_META_TAG) + html},
                                                     {"label", "shop"},
                                                     {"url", "https://shop.example/?a=%20"},
                                                     {"phash", "p"},
                                                     {"read", 0},
                                                     {"created", kStart - 1},
                                                     {"end", kStart + 1000.5},
                                                     {"cardImage", "https://shop.example/card.png"},
                                                     {"cardBackgroundColor", "#112233"},
                                                     {"cardForegroundColor", "#ffEEdd"},
                                                     {"metadata", Dictionary{{"a", Array{1, "b"}}}},
                                                     {"loadedImage", nullptr}})});
    EXPECT_EQ(inbox.unread, 1U);
}

TEST_F(InboxTest, MessagesAreFetchedOnceWithAHandlerCallEach) {
    const auto first = sendMessage({{"created", kStart - 3}});
    const auto second = sendMessage({{"created", kStart - 1}});
    const auto third = sendMessage({{"created", kStart - 2}});
    const auto inbox = list();
    EXPECT_EQ(inbox.ids(), (Ids{second, third, first}));
    EXPECT_EQ(inbox.unread, 3U);
    const auto results = phone->events("result");
    ASSERT_EQ(results.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(results[i].at("values")[0].size(), i + 1);
    EXPECT_EQ(count("inboxState"), 2U);
    EXPECT_EQ(count("inboxMessage"), 3U);

    EXPECT_EQ(listAnew().ids(), inbox.ids());
    EXPECT_EQ(phone->events("result").size(), 1U);
    EXPECT_EQ(count("inboxMessage"), 3U);
}

TEST_F(InboxTest, SynchronisedPhonesNeedOneRequest) {
    for (const auto id : {UINT64_MAX, std::uint64_t{1} << 63U, std::uint64_t{INT64_MAX}, std::uint64_t{5}})
        sendMessage({{"id", id}});
    list();
    open(5);
    const auto before = count("inboxState");
    EXPECT_EQ(listAnew().messages.size(), 4U);
    EXPECT_EQ(count("inboxState"), before + 1);
    EXPECT_EQ(service.requests("inboxState").back()["query"]["timezone"], Value("%2D0"));
}

TEST_F(InboxTest, ListsWithinTheLimitComeFromTheDatabase) {
    sendMessage();
    list();
    sendMessage();
    const auto before = service.requests().size();
    EXPECT_EQ(list().messages.size(), 1U);
    EXPECT_EQ(service.requests().size(), before);
    EXPECT_EQ(listAnew().messages.size(), 2U);
}

TEST_F(InboxTest, OpenedMessagesAreReadHereAndAtTheService) {
    const auto id = sendMessage({{"phash", "p"}});
    list();
    open(id);
    EXPECT_EQ(stored(id)["read"], Value(true));
    EXPECT_EQ(lastPayload("updateInboxMessage"), Value(Dictionary{{"read", true}}));
    EXPECT_EQ(lastPayload("registerEvent")["event_type"], Value("Read"));
    EXPECT_EQ(lastPayload("registerEvent")["event_label"], Value("Rich (null) Message Opened"));
    EXPECT_EQ(lastPayload("registerEvent")["phash"], Value("p"));
    const auto inbox = list();
    EXPECT_EQ(inbox.messages[0]["read"], Value(1));
    EXPECT_EQ(inbox.unread, 0U);

    open(id);
    EXPECT_EQ(lastPayload("registerEvent")["event_type"], Value("Re-Read"));
    EXPECT_EQ(count("updateInboxMessage"), 1U);
}

TEST_F(InboxTest, MessagesReadOfflineAreReportedLater) {
    const auto id = sendMessage();
    list();
    goOffline();
    open(id);
    EXPECT_EQ(countLog(fmt::format("Inbox: message {} could not be marked as read remotely", id)), 1);
    EXPECT_EQ(listAnew().unread, 0U);
    EXPECT_EQ(stored(id)["read"], Value(false));
    goOnline();
    EXPECT_EQ(listAnew().unread, 0U);
    EXPECT_EQ(stored(id)["read"], Value(true));
}

TEST_F(InboxTest, MessagesReadOnAnotherPhoneAreRead) {
    const auto id = sendMessage();
    const auto other = sendMessage();
    EXPECT_EQ(list().unread, 2U);
    const auto second = startSecondPhone("anna");
    second->call(kList);
    second->settle();
    second->call("openInboxMessage:completionHandler:", {id});
    second->settle();
    ASSERT_EQ(stored(id)["read"], Value(true));

    const auto updates = count("updateInboxMessage");
    const auto inbox = listAnew();
    EXPECT_EQ(inbox.unread, 1U);
    EXPECT_EQ(inbox.ids(), (Ids{other, id}));
    EXPECT_EQ(inbox.messages[1]["read"], Value(1));
    EXPECT_EQ(count("updateInboxMessage"), updates);
    EXPECT_EQ(second->quit(), 0);
}

TEST_F(InboxTest, DeletedMessagesAreGoneHereAndAtTheService) {
    const auto id = sendMessage({{"phash", "p"}});
    const auto other = sendMessage();
    list();
    deleteMessage(id);
    EXPECT_EQ(stored(id)["deleted"], Value(true));
    EXPECT_EQ(lastPayload("registerEvent")["event_type"], Value("Delete"));
    EXPECT_EQ(lastPayload("registerEvent")["phash"], Value("p"));
    EXPECT_EQ(list().ids(), Ids{other});
    EXPECT_EQ(listAnew().ids(), Ids{other});
    EXPECT_EQ(count("updateInboxMessage"), 1U);
}

TEST_F(InboxTest, OfflineDeletionsAreReportedAfterARestart) {
    const auto id = sendMessage();
    const auto other = sendMessage();
    list();
    goOffline();
    deleteMessage(id);
    EXPECT_EQ(listAnew().ids(), Ids{other});
    EXPECT_EQ(phone->quit(), 0);
    startPhoneOf("anna");
    EXPECT_EQ(list().ids(), Ids{other});
    EXPECT_EQ(stored(id)["deleted"], Value(false));

    goOnline();
    const auto fetches = count("inboxMessage");
    EXPECT_EQ(listAnew().ids(), Ids{other});
    EXPECT_EQ(stored(id)["deleted"], Value(true));
    EXPECT_EQ(count("inboxMessage"), fetches);
    const auto updates = count("updateInboxMessage");
    EXPECT_EQ(listAnew().ids(), Ids{other});
    EXPECT_EQ(count("updateInboxMessage"), updates);
}

TEST_F(InboxTest, MessagesRemovedByTheOperatorDisappear) {
    const auto id = sendMessage();
    const auto other = sendMessage();
    EXPECT_EQ(list().ids(), (Ids{other, id}));
    removeMessage(other);
    EXPECT_EQ(listAnew().ids(), Ids{id});
    EXPECT_EQ(TestDatabase(databasePath()).value("SELECT count(*) FROM RICH_INBOX"), "1");
}

TEST_F(InboxTest, UsersDoNotSeeEachOthersMessages) {
    const auto annas = sendMessage();
    const auto bens = sendMessage({}, "ben");
    const auto forAll =
        service
            .post("messages",
                  Dictionary{{"appKey", appKey()}, {"all", true}, {"subject", "All"}, {"created", kStart - 90}})["id"]
            .get<std::uint64_t>();
    EXPECT_EQ(list().ids(), (Ids{annas, forAll}));
    phone->call("setTrackingId:", {"ben"});
    phone->settle();
    EXPECT_EQ(list().ids(), Ids{bens});
    deleteMessage(bens);
    EXPECT_EQ(list().ids(), Ids{});
    phone->call("setTrackingId:", {"anna"});
    phone->settle();
    const auto fetches = count("inboxMessage");
    EXPECT_EQ(list().ids(), (Ids{annas, forAll}));
    EXPECT_EQ(count("inboxMessage"), fetches);
}

TEST_F(InboxTest, ExpiredMessagesStayStoredWhileTheServiceListsThem) {
    const auto id = sendMessage({{"end", kStart + 100}});
    EXPECT_EQ(list().unread, 1U);
    phone->perform({{"do", "advance"}, {"seconds", 99.9}});
    EXPECT_EQ(list().ids(), Ids{id});
    phone->perform({{"do", "advance"}, {"seconds", 0.1}});
    const auto expired = list();
    EXPECT_EQ(expired.ids(), Ids{});
    EXPECT_EQ(expired.unread, 0U);
    EXPECT_EQ(listAnew().ids(), Ids{});
    TestDatabase database(databasePath());
    EXPECT_EQ(database.value("SELECT count(*) FROM RICH_INBOX"), "1");
    EXPECT_EQ(count("inboxMessage"), 1U);
    removeMessage(id);
    EXPECT_EQ(listAnew().ids(), Ids{});
    EXPECT_EQ(database.value("SELECT count(*) FROM RICH_INBOX"), "0");
}

TEST_F(InboxTest, CardImagesAreLoadedOnceAndKept) {
    const auto png = testPNG(7, 5);
    const auto jpeg = testJPEG(9, 4);
    const auto first = sendMessage({{"image", hexadecimal(png)}});
    const auto second = sendMessage({{"image", hexadecimal(jpeg)}});
    list();
    const Value firstImage = Dictionary{{"width", 7}, {"height", 5}, {"bytes", png.size()}};
    EXPECT_EQ(imageOf(first), firstImage);
    EXPECT_EQ(imageOf(first), firstImage);
    EXPECT_EQ(imageOf(second), Value(Dictionary{{"width", 9}, {"height", 4}, {"bytes", jpeg.size()}}));
    EXPECT_EQ(count("cardImage"), 2U);

    EXPECT_EQ(phone->quit(), 0);
    goOffline();
    startPhoneOf("anna");
    list();
    const auto before = count("cardImage");
    EXPECT_EQ(imageOf(first), firstImage);
    EXPECT_EQ(count("cardImage"), before);
}

TEST_F(InboxTest, FailedImagesAreNullAndMayLoadLater) {
    const auto png = testPNG(7, 5);
    const auto whole = sendMessage({{"image", hexadecimal(png)}});
    const auto damaged = sendMessage({{"image", hexadecimal(Data(png.begin(), png.begin() + 40))}});
    const auto without = sendMessage();
    list();
    EXPECT_EQ(imageOf(damaged), Value());
    EXPECT_EQ(imageOf(without), Value());
    for (const auto* kind : {"drop", "truncate", "garbage"}) {
        addFault("cardImage", kind);
        EXPECT_EQ(imageOf(whole), Value()) << kind;
        goOnline();
    }
    EXPECT_EQ(imageOf(whole)["width"], Value(7));
}

TEST_F(InboxTest, UnreadableAnswersLeaveTheInboxUnchanged) {
    const auto id = sendMessage();
    list();
    const auto later = sendMessage({{"created", kStart - 1}});
    for (const auto* kind : {"drop", "truncate", "garbage"}) {
        addFault("inboxState", kind);
        EXPECT_EQ(listAnew().ids(), Ids{id}) << kind;
        goOnline();
    }
    for (const auto* kind : {"drop", "truncate", "garbage"}) {
        addFault("inboxMessage", kind);
        EXPECT_EQ(listAnew().ids(), Ids{id}) << kind;
        goOnline();
    }
    EXPECT_EQ(listAnew().ids(), (Ids{later, id}));
}

TEST_F(InboxTest, QuittingDuringSynchronisationLosesNoMessage) {
    for (int i = 0; i < 20; ++i) sendMessage();
    service.post("faults", Dictionary{{"endpoint", "inboxMessage"}, {"kind", "delay"}, {"seconds", 60}});
    phone->send(R"({"do":"call","op":"getInboxMessagesWithCompletionHandler:"})");
    service.get("requests?endpoint=inboxMessage&waitFor=1&timeout=20");
    EXPECT_EQ(phone->end(), 0);
    goOnline();
    startPhoneOf("anna");
    EXPECT_EQ(list().messages.size(), 20U);
}

}  // namespace

}  // namespace vorlane
