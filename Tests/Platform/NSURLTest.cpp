#include "Platform/NSURL.h"

#include <gtest/gtest.h>

namespace vorlane {

namespace {

NSURL url(const std::string& text) { return NSURL::URLWithString(text).value(); }

TEST(NSURLTest, AbsoluteURLKeepsItsString) {
    for (const auto* text :
         {"https://h", "HTTPS://Host.Example:8443/a%20b/./c?x=1&y#f", "http://user:pw@h/", "vorlane://notification-yes",
          "VORLANE://Notification-Yes/path?q", "mailto:a@b", "http://[::1]:80/", "file:///etc", "x-a+b.c://h"}) {
        const auto parsed = NSURL::URLWithString(text);
        ASSERT_TRUE(parsed) << text;
        EXPECT_EQ(parsed->absoluteString(), text);
        EXPECT_EQ(parsed->description(), text);
    }
}

TEST(NSURLTest, InvalidURLsAreNullopt) {
    for (const auto& text :
         {std::string(), std::string("h"), std::string("/path"), std::string("//h/"), std::string("://h"),
          std::string("1a://h"), std::string("http://h h/"), std::string("http://h:99999/"), std::string("http://h:x/"),
          std::string("http://a\"b/"), std::string("http://h/\0", 10), std::string("http://h/\xc3\xa9"),
          std::string("http://[::1/")}) {
        EXPECT_EQ(NSURL::URLWithString(text), std::nullopt) << text;
    }
}

TEST(NSURLTest, DeepLinksMayHoldUnusualHosts) {
    EXPECT_EQ(url("app://item=5&x").host(), "item=5&x");
    EXPECT_EQ(url("app://a,b;c!/d").host(), "a,b;c!");
    EXPECT_EQ(url("app://user@place:80/").host(), "place");
    EXPECT_EQ(url("app://user@place:80/").port(), 80);
    EXPECT_EQ(url("app:///path").host(), "");
    EXPECT_EQ(url("file://server/share").host(), "server");
    EXPECT_EQ(url("app://h?a:b").port(), std::nullopt);
    EXPECT_EQ(url("app://h:?a").port(), std::nullopt);
    EXPECT_EQ(url("tel:+4712345678").path(), "+4712345678");
    for (const auto* text : {"app://h:thing", "app://h:-0", "app://h:65536", "app://h:99999999999999999999",
                             "app://a[b]", "app://[::1", "app://a]", "app://a b"}) {
        EXPECT_EQ(NSURL::URLWithString(text), std::nullopt) << text;
    }
}

TEST(NSURLTest, ComponentsAreAsWritten) {
    const auto full = url("HTTPS://user@Host.Example:8443/a%20b/c?x=1#f");
    EXPECT_EQ(full.scheme(), "HTTPS");
    EXPECT_EQ(full.host(), "Host.Example");
    EXPECT_EQ(full.port(), 8443);
    EXPECT_EQ(full.path(), "/a%20b/c");
    EXPECT_EQ(full.query(), "x=1");

    const auto bare = url("https://h");
    EXPECT_EQ(bare.port(), std::nullopt);
    EXPECT_EQ(bare.path(), "");
    EXPECT_EQ(bare.query(), std::nullopt);
    EXPECT_EQ(url("https://h/?").query(), "");
    EXPECT_EQ(url("https://h/a#?b").query(), std::nullopt);
    EXPECT_EQ(url("http://[::1]:80/").host(), "[::1]");
    EXPECT_EQ(url("http://[::1]:80/").port(), 80);
    EXPECT_EQ(url("vorlane://Location-Yes?x").host(), "Location-Yes");
}

TEST(NSURLTest, URLWithoutAnAuthorityHasNoHost) {
    EXPECT_EQ(url("mailto:a@b").host(), std::nullopt);
    EXPECT_EQ(url("vorlane:notification-yes").host(), std::nullopt);
    EXPECT_EQ(url("mailto:a@b").path(), "a@b");
}

TEST(NSURLTest, URLsWithEqualStringsAreEqual) {
    EXPECT_EQ(url("https://h/a"), url("https://h/a"));
    EXPECT_NE(url("https://h/a"), url("https://H/a"));
}

}  // namespace

}  // namespace vorlane
