#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "Simulator/Service/Pages/EmbeddedPages.h"

namespace vorlane::service {
namespace {

using Colours = std::map<std::string, std::string>;

/// The colours in a part of the style.
Colours coloursIn(const std::string& style) {
    Colours colours;
    const std::regex expression(R"(--([a-z-]+): (#[0-9a-f]{6});)");
    for (std::sregex_iterator match(style.begin(), style.end(), expression), end; match != end; ++match)
        colours[(*match)[1]] = (*match)[2];
    return colours;
}

/// The linear value of one colour component, from 0 to 1.
double linear(const std::string& digits) {
    const double part = std::stoi(digits, nullptr, 16) / 255.0;
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double luminance(const std::string& colour) {
    return 0.2126 * linear(colour.substr(1, 2)) + 0.7152 * linear(colour.substr(3, 2)) +
           0.0722 * linear(colour.substr(5, 2));
}

/// The contrast ratio, from 1 (none) to 21 (black on white).
double contrast(const std::string& one, const std::string& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

void expectLegible(const Colours& colours) {
    ASSERT_EQ(colours.size(), 8u);
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"text", "card"}, {"quiet", "card"}, {"accent", "card"}, {"on-accent", "accent"}};
    for (const auto& [text, ground] : texts)
        EXPECT_GE(contrast(colours.at(text), colours.at(ground)), 4.5) << text << " on " << ground;
    const std::vector<std::pair<std::string, std::string>> shapes = {{"line", "card"}, {"accent", "glow"}};
    // Shapes need less contrast than text.
    for (const auto& [shape, ground] : shapes)
        EXPECT_GE(contrast(colours.at(shape), colours.at(ground)), 3.0) << shape << " on " << ground;
}

TEST(SamplePagesContrastTest, TextIsLegibleInLightAndDarkMode) {
    const auto pages = embeddedPages();
    ASSERT_FALSE(pages.empty());
    const auto& page = pages.begin()->second;
    const auto dark = page.find("prefers-color-scheme: dark");
    ASSERT_NE(dark, std::string::npos);
    expectLegible(coloursIn(page.substr(0, dark)));
    expectLegible(coloursIn(page.substr(dark)));
}

TEST(SamplePagesContrastTest, BlackOnWhiteHasTheHighestContrast) {
    EXPECT_NEAR(contrast("#000000", "#ffffff"), 21, 0.001);
}

}  // namespace
}  // namespace vorlane::service
