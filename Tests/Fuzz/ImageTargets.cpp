#include "Public/VLImage.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace vorlane::fuzz {

void fuzzImage(std::string_view input) {
    const auto image = VLImage::imageWithData(Data(input.begin(), input.end()));
    if (!image) return;
    require(image->width() > 0 && image->height() > 0, "an image has a size");
    require(image->data().size() == input.size(), "an image keeps its bytes");
}

}  // namespace vorlane::fuzz
