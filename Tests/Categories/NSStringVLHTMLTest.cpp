#include <gtest/gtest.h>

#include <string>

#include "Categories/NSString+VLHTML.h"
#include "Public/VLConstants.h"

namespace vorlane {

namespace {

TEST(NSStringVLHTMLTest, TheViewportTagHasItsQuotationMarks) {
    EXPECT_EQ(std::string(VIEWPORT_META_TAG), "<meta name=\"viewport\" content=\"initial-scale=1.0\" />");
}

TEST(NSStringVLHTMLTest, TheTagStandsInFrontOfThePage) {
    EXPECT_EQ(vl_prependHTMLStringWithViewportMetaTag("<p>Hello</p>"), VIEWPORT_META_TAG + std::string("<p>Hello</p>"));
    EXPECT_EQ(vl_prependHTMLStringWithViewportMetaTag(""), VIEWPORT_META_TAG);
    EXPECT_EQ(vl_prependHTMLStringWithViewportMetaTag(std::string("a\0b", 3)),
              VIEWPORT_META_TAG + std::string("a\0b", 3));
}

TEST(NSStringVLHTMLTest, ATagThatIsThereAlreadyIsPutInFrontAgain) {
    EXPECT_EQ(vl_prependHTMLStringWithViewportMetaTag(VIEWPORT_META_TAG),
              std::string(VIEWPORT_META_TAG) + VIEWPORT_META_TAG);
}

}  // namespace

}  // namespace vorlane
