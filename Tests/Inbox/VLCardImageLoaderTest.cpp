#include "Inbox/VLCardImageLoader.h"

#include <gtest/gtest.h>

#include "Tests/Inbox/TestImages.h"
#include "Tests/Network/HandDrivenURLSession.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class VLCardImageLoaderTest : public SimulatedPhoneTest {
protected:
    using Images = std::vector<std::shared_ptr<const VLImage>>;

    static NSURL url(const std::string& text) { return *NSURL::URLWithString(text); }

    /// Loads an image; the answer comes from the URL `place`.
    void load(const std::string& image, const std::string& place, std::int64_t status = 200) {
        loader.load(url(image), url("http://service.test/"),
                    [this](std::shared_ptr<const VLImage> loaded) { images.push_back(std::move(loaded)); });
        network->complete(testPNG(5, 4), std::make_shared<NSHTTPURLResponse>(url(place), status), {});
        phone().settle();
    }

    Images images;
    std::vector<std::string> events;
    std::shared_ptr<HandDrivenURLSession> network = std::make_shared<HandDrivenURLSession>(events);
    VLCardImageLoader loader{network, Platform::current().makeSerialQueue("test.images")};
};

TEST_F(VLCardImageLoaderTest, ARedirectToPlainHTTPIsRefused) {
    load("https://images.test/c.png", "http://elsewhere.test/c.png");
    load("https://images.test/c.png", "https://elsewhere.test/c.png");
    ASSERT_EQ(images.size(), 2U);
    EXPECT_EQ(images[0], nullptr);
    EXPECT_NE(images[1], nullptr);
    EXPECT_EQ(log().count("Card image https://images.test/c.png not loaded: redirected to http://elsewhere.test/c.png",
                          VLLogLevel::Warn),
              1);
}

TEST_F(VLCardImageLoaderTest, OnlyHTTPSFollowsRedirects) {
    load("https://images.test/c.png", "https://images.test/c.png");
    EXPECT_TRUE(network->request().followsRedirects);
    load("http://service.test/c.png", "http://service.test/c.png", 302);
    EXPECT_FALSE(network->request().followsRedirects);
    ASSERT_EQ(images.size(), 2U);
    EXPECT_EQ(images[1], nullptr);
    EXPECT_EQ(log().count("Card image http://service.test/c.png not loaded: HTTP status 302", VLLogLevel::Warn), 1);
}

}  // namespace

}  // namespace vorlane
