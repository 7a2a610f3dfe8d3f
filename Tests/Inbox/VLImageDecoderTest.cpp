#include "Inbox/VLImageDecoder.h"

#include <algorithm>

#include "Inbox/JPEGHeader.h"
#include "Inbox/VLSharedLibrary.h"
#include "Tests/Inbox/TestImages.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

/// The image decodes in exactly that many bytes of memory, and not in one less.
void expectMemory(const Data& image, std::uint64_t bytes) {
    EXPECT_TRUE(VLImageDecoder::describe(image, bytes));
    if (bytes == 0) return;
    EXPECT_FALSE(VLImageDecoder::describe(image, bytes - 1));
}

TEST(VLImageDecoderTest, PNGTakes4BytesForEachPixel) { expectMemory(testPNG(64, 32), 64 * 32 * 4); }

TEST(VLImageDecoderTest, JPEGOfOneScanTakesNoCoefficients) {
    expectMemory(testJPEG(64, 32), 0);
    expectMemory(testJPEG(64, 32, TJPF_CMYK), 0);
}

TEST(VLImageDecoderTest, ProgressiveJPEGTakes2BytesForEachSample) {
    expectMemory(testJPEG(64, 32, TJPF_RGB, TJFLAG_PROGRESSIVE), 64 * 32 * 3 * 2);
    expectMemory(testJPEG(64, 32, TJPF_RGB, TJFLAG_PROGRESSIVE, TJSAMP_420), 64 * 32 * 3);
    expectMemory(testJPEG(64, 32, TJPF_RGB, TJFLAG_PROGRESSIVE, TJSAMP_GRAY), 64 * 32 * 2);
    expectMemory(testJPEG(64, 32, TJPF_CMYK, TJFLAG_PROGRESSIVE), 64 * 32 * 4 * 2);
}

TEST(VLImageDecoderTest, LosslessWebPTakes4BytesForEachPixel) {
    expectMemory(testLosslessWebP(64, 32), 64 * 32 * 4);
    expectMemory(testWebP(64, 32), 0);
}

TEST(VLImageDecoderTest, TheLargestImagesFitTheLimits) {
    constexpr auto kMost = VLImageDecoder::kMostMemory;
    using Description = VLImageDecoder::Description;
    EXPECT_TRUE((Description{"", 4096, 4096}).isWithin(kMost, kMost));
    EXPECT_FALSE((Description{"", 4096, 4097}).isWithin(kMost, 0));
    EXPECT_FALSE((Description{"", 4096, 4096}).isWithin(kMost, kMost + 1));
    EXPECT_FALSE((Description{"", 0, 4096}).isWithin(kMost, 0));
}

TEST(JPEGHeaderTest, TheFrameIsReadInFrontOfTheFirstScan) {
    const auto header = JPEGHeader::headerWithData(testJPEG(31, 17, TJPF_RGB, TJFLAG_PROGRESSIVE, TJSAMP_420));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->width, 31U);
    EXPECT_EQ(header->height, 17U);
    EXPECT_EQ(header->samplesPerPixel, 1.5);
    EXPECT_TRUE(header->hasSeveralScans);
    EXPECT_EQ(header->coefficientBytes(), 32U * 32U * 3U);
}

TEST(JPEGHeaderTest, ComponentsOneAfterAnotherAreSeveralScans) {
    auto bytes = testJPEG(8, 8);
    EXPECT_FALSE(JPEGHeader::headerWithData(bytes)->hasSeveralScans);
    const Data marker{0xFF, 0xDA};
    const auto scan = std::search(bytes.begin(), bytes.end(), marker.begin(), marker.end());
    scan[4] = 1;  // the number of components in the scan
    EXPECT_TRUE(JPEGHeader::headerWithData(bytes)->hasSeveralScans);
}

TEST(JPEGHeaderTest, NoCutOffHeaderIsAHeader) {
    const auto bytes = testJPEG(8, 8);
    const Data marker{0xFF, 0xDA};
    const auto scan = std::search(bytes.begin(), bytes.end(), marker.begin(), marker.end());
    for (auto end = bytes.begin(); end <= scan; ++end)
        EXPECT_FALSE(JPEGHeader::headerWithData(Data(bytes.begin(), end)));
    EXPECT_FALSE(JPEGHeader::headerWithData(Data{0xFF, 0xD8, 0xFF, 0xC0, 0x00, 0x01}));
    EXPECT_FALSE(JPEGHeader::headerWithData(Data(1000, 0xFF)));
}

class VLSharedLibraryTest : public SimulatedPhoneTest {};

TEST_F(VLSharedLibraryTest, AMissingLibraryIsLogged) {
    const VLSharedLibrary library("libnone.so.1");
    EXPECT_FALSE(library.isLoaded());
    void (*function)() = nullptr;
    EXPECT_FALSE(library.find("none", function));
    const auto lines = log().linesContaining("Cannot use libnone.so.1: libnone.so.1: cannot open shared object file");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Error);
}

TEST_F(VLSharedLibraryTest, AMissingFunctionIsLogged) {
    const VLSharedLibrary library("libpng16.so.16");
    EXPECT_TRUE(library.isLoaded());
    void (*function)() = nullptr;
    EXPECT_TRUE(library.find("png_image_free", function));
    EXPECT_NE(function, nullptr);
    EXPECT_FALSE(library.find("png_none", function));
    EXPECT_EQ(log().linesContaining("Cannot use libpng16.so.16: ").size(), 1U);
}

}  // namespace

}  // namespace vorlane
