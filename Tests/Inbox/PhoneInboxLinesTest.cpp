#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "Public/VLConstants.h"
#include "Simulator/Support/PhoneProcess.h"
#include "Tests/Inbox/TestDatabase.h"
#include "Tests/Inbox/TestImages.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane {

namespace {

constexpr const char* kList = "getInboxMessagesWithCompletionHandler:";

/// A phone process that cannot reach its service, with two messages in its database.
class PhoneInboxLinesTest : public ::testing::Test {
protected:
    PhoneInboxLinesTest() {
        phone.call("setTrackingId:", {"T"});
        phone.settle();
        const auto png = testPNG(5, 4);
        std::string hex;
        for (const auto byte : png) hex += fmt::format("{:02x}", byte);
        imageSize = png.size();
        TestDatabase database(folder.path("AppInboxV2Plus.db"));
        database.execute(
            "INSERT INTO RICH_INBOX (TRACKING_ID, NOTIF_ID, SUBJECT, CONTENT, LABEL, URL, PHASH, READ, CREATED, END, "
            "CARD_URL, BACKGROUND_COLOR, FOREGROUND_COLOR, METADATA) VALUES ('T', -1, 'Subject', '%3Cp%3E', 'Label', "
            "'u', 'phash', 1, 200, 1800000000, 'c', '#111111', '#222222', '{\"a\":1}')");
        database.execute(
            "INSERT INTO RICH_INBOX (TRACKING_ID, NOTIF_ID, READ, CREATED, END, CARD_IMAGE) VALUES ('T', "
            "5, 0, 100, 1800000000, x'" +
            hex + "')");
    }
    ~PhoneInboxLinesTest() override { phone.quit(); }

    /// Returns what the last handler received.
    Dictionary lastResult() {
        phone.settle();
        const auto results = phone.events("result");
        return results.empty() ? Dictionary() : results.back();
    }
    Value list() {
        phone.call(kList);
        return lastResult().at("values");
    }
    std::string refusal(const Dictionary& line) {
        const auto answer = phone.answerTo(line);
        return answer.contains("error") ? answer.at("error").get<std::string>() : "none";
    }

    const TemporaryFolder folder;
    std::size_t imageSize = 0;
    support::PhoneProcess phone{VORLANE_PHONE,
                                {"--data-dir", folder.path(), "--service", "http://127.0.0.1:1", "--clock", "virtual"}};
};

TEST_F(PhoneInboxLinesTest, AListContainsEveryProperty) {
    const Value first{{"messageId", 18446744073709551615U},
                      {"subject", "Subject"},
                      {"htmlContent", std::string(VIEWPORT_META_TAG) + "<p>"},
                      {"label", "Label"},
                      {"url", "u"},
                      {"phash", "phash"},
                      {"read", 1},
                      {"created", 200.0},
                      {"end", 1800000000.0},
                      {"cardImage", "c"},
                      {"cardBackgroundColor", "#111111"},
                      {"cardForegroundColor", "#222222"},
                      {"metadata", {{"a", 1}}},
                      {"loadedImage", nullptr}};
    const Value second{{"messageId", 5},
                       {"subject", nullptr},
                       {"htmlContent", nullptr},
                       {"label", nullptr},
                       {"url", nullptr},
                       {"phash", nullptr},
                       {"read", 0},
                       {"created", 100.0},
                       {"end", 1800000000.0},
                       {"cardImage", nullptr},
                       {"cardBackgroundColor", "#FFFFFF"},
                       {"cardForegroundColor", "#000000"},
                       {"metadata", Value::object()},
                       {"loadedImage", nullptr}};
    EXPECT_EQ(list(), Value(Array{Value(Array{first, second}), 1}));
    const auto result = lastResult();
    EXPECT_EQ(result.at("op"), Value(kList));
    EXPECT_EQ(result.at("main"), Value(true));
}

TEST_F(PhoneInboxLinesTest, MessagesAreOpenedAndDeletedById) {
    list();
    phone.call("openInboxMessage:completionHandler:", {5});
    EXPECT_EQ(lastResult().at("values"), Value(Array{nullptr}));
    EXPECT_EQ(list().at(1), Value(0));
    phone.call("deleteInboxMessage:completionHandler:", {18446744073709551615U});
    EXPECT_EQ(lastResult().at("op"), Value("deleteInboxMessage:completionHandler:"));
    EXPECT_EQ(list().at(0).size(), 1U);
}

TEST_F(PhoneInboxLinesTest, AnImageIsReported) {
    list();
    phone.perform({{"do", "loadImage"}, {"messageId", 5}});
    const Value image{{"width", 5}, {"height", 4}, {"bytes", imageSize}};
    EXPECT_EQ(lastResult().at("values"), Value(Array{image}));
    EXPECT_EQ(lastResult().at("op"), Value("loadImage"));
    phone.perform({{"do", "loadImage"}, {"messageId", 18446744073709551615U}});
    EXPECT_EQ(lastResult().at("values"), Value(Array{nullptr}));
}

TEST_F(PhoneInboxLinesTest, WithoutAHandlerNoResultIsReported) {
    list();
    phone.takeEvents();
    phone.perform({{"do", "call"}, {"op", kList}, {"handler", false}});
    phone.perform({{"do", "loadImage"}, {"messageId", 5}, {"handler", false}});
    phone.perform({{"do", "call"}, {"op", "openInboxMessage:completionHandler:"}, {"args", {5}}, {"handler", false}});
    phone.settle();
    EXPECT_TRUE(phone.events("result").empty());
    EXPECT_EQ(list().at(1), Value(0));
}

TEST_F(PhoneInboxLinesTest, AMessageOutsideTheLastListIsRefused) {
    EXPECT_EQ(refusal({{"do", "loadImage"}, {"messageId", 5}}), "no message 5 in the last inbox list");
    list();
    for (const auto* operation : {"openInboxMessage:completionHandler:", "deleteInboxMessage:completionHandler:"}) {
        EXPECT_EQ(refusal({{"do", "call"}, {"op", operation}, {"args", {6}}}), "no message 6 in the last inbox list");
        EXPECT_EQ(refusal({{"do", "call"}, {"op", operation}, {"args", {"5"}}}),
                  "no message \"5\" in the last inbox list");
        EXPECT_NE(refusal({{"do", "call"}, {"op", operation}}), "none");
    }
    EXPECT_EQ(refusal({{"do", "loadImage"}, {"messageId", nullptr}}), "messageId must be the id of a message");
    EXPECT_EQ(refusal({{"do", "loadImage"}}), "missing field messageId");
}

TEST_F(PhoneInboxLinesTest, ANullMessageIsPassedToTheLibrary) {
    phone.call("openInboxMessage:completionHandler:", {nullptr});
    EXPECT_EQ(lastResult().at("values").at(0).at("domain"), Value("vorlane.sdk.inbox"));
}

TEST_F(PhoneInboxLinesTest, TheHTMLHelpersCanBeCalled) {
    const auto help = [this](const char* name, const char* text) {
        return phone.perform({{"do", "helper"}, {"name", name}, {"args", {text}}});
    };
    EXPECT_EQ(help("vl_unescapeHTML", "&lt;p&gt;&#233;&#xE9;&apos;&x;"), Value("<p>éé'&x;"));
    EXPECT_EQ(help("vl_prependHTMLStringWithViewportMetaTag", "<p>"), Value(std::string(VIEWPORT_META_TAG) + "<p>"));
    EXPECT_EQ(phone.perform({{"do", "query"}, {"what", "constants"}}).at("VIEWPORT_META_TAG"),
              Value(VIEWPORT_META_TAG));
}

}  // namespace

}  // namespace vorlane
