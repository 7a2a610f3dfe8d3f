#include <gtest/gtest.h>

#include "Categories/NSURLRequest+VLHTTPMethod.h"
#include "Public/VLConstants.h"

namespace vorlane {

namespace {

NSURLRequest request() { return {*NSURL::URLWithString("https://h/")}; }

TEST(NSURLRequestVLHTTPMethodTest, MethodsConvertBothWays) {
    const char* texts[] = {VL_HTTP_GET, VL_HTTP_POST, VL_HTTP_PUT, VL_HTTP_DELETE};
    const char* expected[] = {"GET", "POST", "PUT", "DELETE"};
    for (std::int64_t number = 0; number < 4; ++number) {
        auto changed = request();
        setVLHTTPMethod(changed, number);
        EXPECT_EQ(changed.HTTPMethod, expected[number]);
        EXPECT_STREQ(texts[number], expected[number]);
        EXPECT_EQ(VLHTTPMethod(changed), number);
    }
}

TEST(NSURLRequestVLHTTPMethodTest, AnUnknownNumberSetsGET) {
    for (const std::int64_t number : {7, 4, -1}) {
        auto changed = request();
        changed.HTTPMethod = "POST";
        setVLHTTPMethod(changed, number);
        EXPECT_EQ(changed.HTTPMethod, "GET");
    }
}

TEST(NSURLRequestVLHTTPMethodTest, AnUnknownMethodHasNoNumber) {
    for (const auto* text : {"get", "PATCH", ""}) {
        auto changed = request();
        changed.HTTPMethod = text;
        EXPECT_EQ(VLHTTPMethod(changed), -1) << text;
    }
}

}  // namespace

}  // namespace vorlane
