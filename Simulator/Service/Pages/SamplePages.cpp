#include "Simulator/Service/Pages/SamplePages.h"

#include <string>
#include <string_view>
#include <utility>

#include "Simulator/Service/Pages/EmbeddedPages.h"

namespace vorlane::service {
namespace {

struct Sample {
    const char* placement;
    /// The file name without its extension; also the end of the phash.
    const char* file;
};

constexpr Sample kSamples[] = {{"App Open", "app-open"},
                               {"Feedback", "feedback"},
                               {"Notification Prompt", "notification-prompt"},
                               {"Notification Settings", "notification-settings"},
                               {"Notification Provisional Upgrade", "notification-provisional-upgrade"},
                               {"Location Prompt", "location-prompt"},
                               {"Location Settings", "location-settings"}};

/// Returns the content of the title element.
std::string titleOf(const std::string& html) {
    constexpr std::string_view kTag = "<title>";
    const auto begin = html.find(kTag) + kTag.size();
    return html.substr(begin, html.find("</title>", begin) - begin);
}

std::vector<Placement> makeSamplePages() {
    auto pages = embeddedPages();
    std::vector<Placement> placements;
    for (const auto& [placement, file] : kSamples) {
        const std::string name = file;
        auto html = std::move(pages.at(name + ".html"));
        Dictionary metadata{{"title", titleOf(html)}};
        placements.push_back({placement, std::move(html), std::move(metadata), "sample-" + name});
    }
    return placements;
}

}  // namespace

const std::vector<Placement>& samplePages() {
    static const std::vector<Placement> pages = makeSamplePages();
    return pages;
}

}  // namespace vorlane::service
