#include "Core/Base/VLError.h"

#include <gtest/gtest.h>

namespace vorlane {

namespace {

TEST(VLErrorTest, AnErrorHasItsDomainCodeAndDescription) {
    const auto error = VLError::errorWithDomain(VLErrorDomainTag, -3, "went wrong");
    EXPECT_EQ(error.domain(), "vorlane.sdk.tag");
    EXPECT_EQ(error.code(), -3);
    EXPECT_EQ(error.localizedDescription(), "went wrong");
    EXPECT_EQ(error.userInfo(), (Dictionary{{NSLocalizedDescriptionKey, "went wrong"}}));
    EXPECT_EQ(error.description(), "Error Domain=vorlane.sdk.tag Code=-3 \"went wrong\"");
}

TEST(VLErrorTest, TheDescriptionReplacesTheOneInTheUserInfo) {
    const Dictionary userInfo{{NSLocalizedDescriptionKey, "old"}, {"sqlite3_errcode", 5}};
    for (const auto& error :
         {VLError::errorWithDomain("d", 1, "new", userInfo), VLError::initWithDomain("d", 1, "new", userInfo)}) {
        EXPECT_EQ(error.userInfo(), (Dictionary{{NSLocalizedDescriptionKey, "new"}, {"sqlite3_errcode", 5}}));
    }
}

TEST(VLErrorTest, TheDomainsHaveTheirNames) {
    EXPECT_STREQ(VLErrorDomainTag, "vorlane.sdk.tag");
    EXPECT_STREQ(VLErrorDomainInbox, "vorlane.sdk.inbox");
    EXPECT_STREQ(VLErrorDomainNetwork, "vorlane.sdk.network");
    EXPECT_STREQ(VLErrorDomainInterstitial, "vorlane.sdk.interstitial");
    EXPECT_STREQ(VLErrorDomainDeviceRegistration, "vorlane.sdk.deviceregistration");
}

}  // namespace

}  // namespace vorlane
