#include "Simulator/Service/Pages/SamplePages.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Simulator/Service/Pages/EmbeddedPages.h"
#include "Simulator/Service/Store/Placement.h"

namespace vorlane::service {
namespace {

/// Runs for every page.
class SamplePagesTest : public ::testing::TestWithParam<std::string> {
protected:
    /// The first group of every match of the pattern.
    std::vector<std::string> all(const std::string& pattern) const {
        const std::regex expression(pattern);
        std::vector<std::string> found;
        for (std::sregex_iterator match(html.begin(), html.end(), expression), end; match != end; ++match)
            found.push_back((*match)[1]);
        return found;
    }

    std::size_t count(const std::string& pattern) const { return all("(" + pattern + ")").size(); }

    static const Placement& placement(const std::string& name) {
        for (const auto& page : samplePages()) {
            if (page.name == name) return page;
        }
        throw std::runtime_error("no sample page for " + name);
    }

    const Placement& page = placement(GetParam());
    const std::string html = *page.html;
};

const std::map<std::string, std::set<std::string>>& linksOfPages() {
    static const std::map<std::string, std::set<std::string>> links = {
        {"App Open", {"notification-location-yes", "notification-location-no"}},
        {"Feedback", {"notification-yes", "notification-no"}},
        {"Notification Prompt", {"notification-yes", "notification-no"}},
        {"Notification Settings", {"notification-settings-yes", "notification-no"}},
        {"Notification Provisional Upgrade", {"notification-yes", "notification-no"}},
        {"Location Prompt", {"location-yes", "location-no"}},
        {"Location Settings", {"location-settings-yes", "location-no"}}};
    return links;
}

/// The links that the library handles.
const std::set<std::string> kActions = {"notification-yes",
                                        "notification-no",
                                        "location-yes",
                                        "location-no",
                                        "notification-settings-yes",
                                        "location-settings-yes",
                                        "notification-location-yes",
                                        "notification-location-no"};

TEST_P(SamplePagesTest, EveryLinkIsAKnownAction) {
    std::set<std::string> hosts;
    const std::string scheme = "vorlane://";
    for (const auto& link : all(R"re((?:href|action|formaction)="([^"]*)")re")) {
        ASSERT_TRUE(link.starts_with(scheme)) << link;
        const auto host = link.substr(scheme.size());
        EXPECT_TRUE(kActions.contains(host)) << link;
        hosts.insert(host);
    }
    EXPECT_EQ(hosts, linksOfPages().at(page.name));
}

TEST_P(SamplePagesTest, NothingIsLoadedFromElsewhere) {
    for (const char* pattern :
         {"<link", "<script", "<img", "<iframe", R"(\ssrc\s*=)", R"(url\()", "@import", "https?:"})
        EXPECT_EQ(count(pattern), 0u) << pattern;
    EXPECT_EQ(count("<style>"), 1u);
}

TEST_P(SamplePagesTest, PageIsCompleteAndNamesItsLanguage) {
    EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html lang=\"en\">\n"));
    EXPECT_TRUE(html.ends_with("</html>\n"));
    EXPECT_EQ(count(R"(<meta charset="utf-8">)"), 1u);
    EXPECT_EQ(count("<main>"), 1u);
    EXPECT_EQ(count("</main>"), 1u);
}

TEST_P(SamplePagesTest, TheOnlyHeadingEqualsTheTitle) {
    const auto headings = all("<h1>([^<]*)</h1>");
    ASSERT_EQ(headings.size(), 1u);
    EXPECT_EQ(all("<title>([^<]+)</title>"), headings);
    EXPECT_EQ(page.metadata, (Dictionary{{"title", headings[0]}}));
    EXPECT_EQ(count("<h[2-6]"), 0u);
}

TEST_P(SamplePagesTest, PicturesAreHiddenFromScreenReaders) {
    EXPECT_EQ(count("<svg"), 1u);
    EXPECT_EQ(count(R"re(<svg[^>]* aria-hidden="true")re"), 1u);
}

TEST_P(SamplePagesTest, EveryFieldHasALabel) {
    for (const auto& field : all("(<textarea[^>]*>|<input[^>]*>|<select[^>]*>)")) {
        std::smatch id;
        const bool isNamed = std::regex_search(field, id, std::regex(R"re(id="([^"]+)")re"));
        const auto wrapped =
            html.rfind("<label>", html.find(field)) == html.find(field) - std::string("<label>").size();
        EXPECT_TRUE(wrapped || (isNamed && count("<label[^>]* for=\"" + id[1].str() + "\"") == 1)) << field;
    }
    EXPECT_EQ(count("<fieldset>"), count("<legend>"));
}

TEST_P(SamplePagesTest, EveryButtonHasATextAndAFocusStyle) {
    const auto buttons = all(R"re(<(?:a|button) class="button[^>]*>([^<]*)</(?:a|button)>)re");
    EXPECT_GE(buttons.size(), 2u);
    EXPECT_EQ(buttons.size(), count("<a ") + count("<button "));
    for (const auto& text : buttons) EXPECT_FALSE(text.empty());
    EXPECT_EQ(std::set<std::string>(buttons.begin(), buttons.end()).size(), buttons.size());
    EXPECT_GE(count(":focus-visible"), 1u);
}

TEST_P(SamplePagesTest, HasADarkMode) { EXPECT_EQ(count(R"(prefers-color-scheme: dark)"), 1u); }

TEST_P(SamplePagesTest, PageSurvivesItsEncoding) {
    const auto message = page.message();
    const auto content = stringByRemovingPercentEncoding(message.at("messagecontent").get<std::string>());
    ASSERT_TRUE(content);
    const auto parsed = Value::parse(*content);
    EXPECT_EQ(stringByRemovingPercentEncoding(parsed["html"].get<std::string>()), html);
    EXPECT_EQ(parsed["title"], page.metadata.at("title"));
}

TEST_P(SamplePagesTest, PlacementIsKnownToApps) {
    EXPECT_TRUE(Placement::isName(page.name));
    EXPECT_TRUE(page.phash && page.phash->starts_with("sample-"));
}

std::vector<std::string> namesOfPages() {
    std::vector<std::string> names;
    for (const auto& [name, links] : linksOfPages()) names.push_back(name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Pages, SamplePagesTest, ::testing::ValuesIn(namesOfPages()),
                         [](const auto& test) { return std::regex_replace(test.param, std::regex(" "), ""); });

TEST(EmbeddedPagesTest, EveryFileIsOnePlacementsSample) {
    EXPECT_EQ(embeddedPages().size(), samplePages().size());
    std::set<std::string> pages;
    std::set<std::string> phashes;
    for (const auto& page : samplePages()) {
        pages.insert(*page.html);
        phashes.insert(*page.phash);
    }
    EXPECT_EQ(pages.size(), samplePages().size());
    EXPECT_EQ(phashes.size(), samplePages().size());
}

}  // namespace
}  // namespace vorlane::service
