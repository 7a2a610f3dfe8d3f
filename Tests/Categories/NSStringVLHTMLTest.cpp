#include <gtest/gtest.h>

#include <string>

#include "Categories/HTMLEntities.h"
#include "Categories/NSString+VLHTML.h"
#include "Public/VLConstants.h"

namespace vorlane {

namespace {

TEST(NSStringVLHTMLTest, NamedReferencesAreReplaced) {
    EXPECT_EQ(vl_unescapeHTML("&lt;p&gt; &quot;Tom&quot; &amp; &apos;J&apos;"), "<p> \"Tom\" & 'J'");
    EXPECT_EQ(vl_unescapeHTML("&eacute;&Eacute;&szlig;&nbsp;&yuml;"), "éÉß\u00A0ÿ");
    EXPECT_EQ(vl_unescapeHTML("&euro;&thetasym;&zwj;&diams;&sigmaf;&trade;"), "€ϑ\u200D♦ς™");
}

TEST(NSStringVLHTMLTest, EveryNameOfHTML4IsKnown) {
    EXPECT_EQ(kHTMLEntities.size(), 252U + 1U);
    std::string_view previous;
    for (const auto& entity : kHTMLEntities) {
        EXPECT_LT(previous, entity.name);
        previous = entity.name;
        const auto reference = "&" + std::string(entity.name) + ";";
        const auto number = "&#" + std::to_string(static_cast<std::uint32_t>(entity.character)) + ";";
        EXPECT_NE(vl_unescapeHTML(reference), reference);
        EXPECT_EQ(vl_unescapeHTML(reference), vl_unescapeHTML(number)) << entity.name;
    }
}

TEST(NSStringVLHTMLTest, NumericReferencesAreReplaced) {
    EXPECT_EQ(vl_unescapeHTML("&#65;&#x42;&#X43;&#x6a;&#x6A;&#0000068;"), "ABCjjD");
    EXPECT_EQ(vl_unescapeHTML("&#127;&#128;&#2047;&#2048;&#65535;&#65536;&#x10FFFF;"),
              "\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF");
    EXPECT_EQ(vl_unescapeHTML("&#x1F600;"), "😀");
}

TEST(NSStringVLHTMLTest, AnythingElseStaysUnchanged) {
    for (const std::string text : {"",
                                   "plain",
                                   "&",
                                   "&&",
                                   "&;",
                                   "& amp;",
                                   "&amp",
                                   "&AMP;",
                                   "&Lt;",
                                   "&bogus;",
                                   "&thetasymx;",
                                   "&verylongnamethatnoentityhas;",
                                   "&#;",
                                   "&#x;",
                                   "&#X;",
                                   "&#6",
                                   "&#6 ;",
                                   "&#xG;",
                                   "&#x6g;",
                                   "&#6a;",
                                   "&#-6;",
                                   "&#0;",
                                   "&#x0;",
                                   "&#55296;",
                                   "&#xDFFF;",
                                   "&#1114112;",
                                   "&#x110000;",
                                   "&#99999999999999999999;",
                                   "&#xFFFFFFFFFFFFFFFFF;",
                                   "a=1&b=2"}) {
        EXPECT_EQ(vl_unescapeHTML(text), text);
    }
}

TEST(NSStringVLHTMLTest, ReferencesAreReplacedOnce) {
    EXPECT_EQ(vl_unescapeHTML("&amp;lt;&amp;amp;&amp;#65;"), "&lt;&amp;&#65;");
    EXPECT_EQ(vl_unescapeHTML("&&lt;&amp&gt;"), "&<&amp>");
}

TEST(NSStringVLHTMLTest, OneMillionAmpersandsAreFast) {
    const std::string text(1'000'000, '&');
    EXPECT_EQ(vl_unescapeHTML(text), text);
    const std::string digits = "&#" + std::string(1'000'000, '1');
    EXPECT_EQ(vl_unescapeHTML(digits), digits);
}

TEST(NSStringVLHTMLTest, TheViewportTagIsPrepended) {
    EXPECT_STREQ(VIEWPORT_META_TAG, "<meta name=\"viewport\" content=\"initial-scale=1.0\" />");
    EXPECT_EQ(vl_prependHTMLStringWithViewportMetaTag("<p>Hi</p>"),
              "<meta name=\"viewport\" content=\"initial-scale=1.0\" /><p>Hi</p>");
    EXPECT_EQ(vl_prependHTMLStringWithViewportMetaTag(""), VIEWPORT_META_TAG);
}

}  // namespace

}  // namespace vorlane
