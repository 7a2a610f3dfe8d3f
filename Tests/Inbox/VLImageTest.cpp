#include "Public/VLImage.h"

#include <gtest/gtest.h>

#include <string>

#include "Tests/Inbox/TestImages.h"

namespace vorlane {

namespace {

void expectImage(const Data& bytes, const std::string& mediaType, std::uint32_t width, std::uint32_t height) {
    const auto image = VLImage::imageWithData(bytes);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->data(), bytes);
    EXPECT_EQ(image->mediaType(), mediaType);
    EXPECT_EQ(image->width(), width);
    EXPECT_EQ(image->height(), height);
}

Data textData(const std::string& text) { return {text.begin(), text.end()}; }

/// No prefix is an image, except those that lack only the last `trailer` bytes.
void expectWholeOnly(const Data& bytes, std::size_t trailer = 0) {
    for (std::size_t size = 0; size < bytes.size() - trailer; size += 1 + bytes.size() / 200) {
        const Data cutOff(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(VLImage::imageWithData(cutOff), nullptr) << size << " of " << bytes.size();
    }
}

/// Checking a changed copy ends with an image of a bounded size or with none.
void expectSafe(const Data& bytes) {
    for (std::size_t place = 0; place < bytes.size(); place += 1 + bytes.size() / 300) {
        for (const int change : {0x01, 0x80, 0xFF}) {
            auto damaged = bytes;
            damaged[place] = static_cast<std::uint8_t>(damaged[place] ^ change);
            const auto image = VLImage::imageWithData(damaged);
            const auto pixels = image ? std::uint64_t{image->width()} * image->height() : 0;
            EXPECT_LE(pixels, std::uint64_t{1} << 24U);
        }
    }
}

TEST(VLImageTest, PNGIsAnImage) { expectImage(testPNG(31, 17), "image/png", 31, 17); }
TEST(VLImageTest, JPEGIsAnImage) { expectImage(testJPEG(31, 17), "image/jpeg", 31, 17); }
TEST(VLImageTest, ProgressiveJPEGIsAnImage) {
    expectImage(testJPEG(31, 17, TJPF_RGB, TJFLAG_PROGRESSIVE), "image/jpeg", 31, 17);
}
TEST(VLImageTest, CMYKJPEGIsAnImage) { expectImage(testJPEG(31, 17, TJPF_CMYK), "image/jpeg", 31, 17); }
TEST(VLImageTest, WebPIsAnImage) { expectImage(testWebP(31, 17), "image/webp", 31, 17); }

TEST(VLImageTest, LosslessWebPIsAnImage) { expectImage(testLosslessWebP(31, 17), "image/webp", 31, 17); }

TEST(VLImageTest, OtherBytesAreNoImage) {
    for (const auto* text : {"", "x", "<svg/>", "GIF89a", "\x89PNG\r\n\x1A\n", "\xFF\xD8\xFF", "RIFF", "RIFFxxxxWEBP",
                             "RIFFxxxxWEBPVP8 ", "<html>not found</html>"}) {
        EXPECT_EQ(VLImage::imageWithData(textData(text)), nullptr) << text;
    }
    EXPECT_EQ(VLImage::imageWithData(Data(1'000'000, 0)), nullptr);
}

TEST(VLImageTest, ACutOffImageIsNoImage) {
    // The check sum of the pixels and the last chunk follow the pixels.
    expectWholeOnly(testPNG(64, 64), 16);
    expectWholeOnly(testJPEG(64, 64));
    expectWholeOnly(testWebP(64, 64));
}

TEST(VLImageTest, DamagedImagesAreSafeToCheck) {
    expectSafe(testPNG(64, 64));
    expectSafe(testJPEG(64, 64));
    expectSafe(testJPEG(64, 64, TJPF_RGB, TJFLAG_PROGRESSIVE));
    expectSafe(testWebP(64, 64));
    expectSafe(testLosslessWebP(64, 64));
}

/// A few bytes that announce gigabytes of pixels.
TEST(VLImageTest, AnImageWithTooManyPixelsIsNoImage) {
    auto bytes = testPNG(1, 1);
    // The width and the height follow the signature and the length and name of the first chunk.
    for (const std::size_t place : {16U, 20U}) bytes[place + 1] = 0x7F;
    EXPECT_EQ(VLImage::imageWithData(bytes), nullptr);
    expectImage(testPNG(4096, 2), "image/png", 4096, 2);
    EXPECT_EQ(VLImage::imageWithData(testPNG(4097, 4096)), nullptr);
}

}  // namespace

}  // namespace vorlane
