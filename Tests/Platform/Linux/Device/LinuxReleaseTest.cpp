#include "Platform/Linux/Device/LinuxRelease.h"

#include <gtest/gtest.h>

namespace vorlane {
namespace {

using Fields = std::map<std::string, std::string>;

TEST(LinuxReleaseTest, ParsesFieldsLikeAShell) {
    EXPECT_EQ(fieldsOfRelease("NAME=\"Debian GNU/Linux\"\nVERSION_ID='12'\nID=debian\n"),
              (Fields{{"NAME", "Debian GNU/Linux"}, {"VERSION_ID", "12"}, {"ID", "debian"}}));
    EXPECT_EQ(fieldsOfRelease("NAME=\"a \\\"b\\\" \\$c\""), (Fields{{"NAME", "a \"b\" $c"}}));
    EXPECT_EQ(fieldsOfRelease("NAME='a \\b'"), (Fields{{"NAME", "a \\b"}}));
    EXPECT_EQ(fieldsOfRelease("NAME=a\\ b"), (Fields{{"NAME", "a b"}}));
    EXPECT_EQ(fieldsOfRelease("NAME=it\"'\"s"), (Fields{{"NAME", "it's"}}));
}

TEST(LinuxReleaseTest, IgnoresOtherLines) {
    EXPECT_EQ(fieldsOfRelease("# NAME=x\n\nnonsense\n=x\nA B=x\n  ID=debian \r\n"), (Fields{{"ID", "debian"}}));
    EXPECT_EQ(fieldsOfRelease(""), Fields());
    EXPECT_EQ(fieldsOfRelease(std::string("\0\xff=\n", 4)), Fields());
}

TEST(LinuxReleaseTest, OpenQuoteEndsWithItsLine) {
    EXPECT_EQ(fieldsOfRelease("NAME=\"half\nID=x\\"), (Fields{{"NAME", "half"}, {"ID", "x\\"}}));
}

TEST(LinuxReleaseTest, LastAssignmentCounts) { EXPECT_EQ(fieldsOfRelease("ID=one\nID=two"), (Fields{{"ID", "two"}})); }

}  // namespace
}  // namespace vorlane
