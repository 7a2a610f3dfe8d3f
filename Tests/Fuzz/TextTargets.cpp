#include <algorithm>
#include <optional>
#include <string>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSNumber+VLLooseValue.h"
#include "Categories/NSString+VLCaseInsensitive.h"
#include "Categories/NSString+VLHTML.h"
#include "Categories/NSString+VLHash.h"
#include "Categories/NSString+VLUTF8.h"
#include "Categories/UIColor+VLHexColors.h"
#include "Platform/NSURL.h"
#include "Platform/NSURLComponents.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace vorlane::fuzz {

void fuzzJSON(std::string_view input) {
    std::optional<NSError> error;
    const auto object = vl_dictionaryWithJSON(std::string(input), error);
    require(object.has_value() != error.has_value(), "JSON parses or fails with an error");
    if (!object) return;
    vl_description(object);
    const auto text = vl_asJSON(*object);
    require(!text.empty(), "an object that was parsed can be written");
    require(vl_dictionaryWithJSON(text, error) == object, "an object that was written can be parsed");
}

void fuzzText(std::string_view input) {
    const std::string text(input);
    if (vl_isUTF8(text)) require(vl_isUTF8(vl_unescapeHTML(text)), "character references become UTF-8");
    if (const auto decoded = stringByRemovingPercentEncoding(text)) {
        require(vl_isUTF8(*decoded), "decoded strings are UTF-8");
    }
    for (const auto* allowed : {&vl_URIComponentAllowedCharacterSet(), &vl_formURLEncodingAllowedCharacterSet()}) {
        const auto decoded = stringByRemovingPercentEncoding(stringByAddingPercentEncoding(text, *allowed));
        require(decoded.has_value() == vl_isUTF8(text), "percent-encoding of UTF-8 can be undone");
        require(!decoded || *decoded == text, "percent-encoding is undone exactly");
    }
    require(vl_isEqualToStringCaseInsensitive(text, text), "a string equals itself");
    const Value value(text);
    vl_looseNumber(&value);
    vl_looseText(&value);
    vl_description(value);
    vl_md5(text);
}

void fuzzColour(std::string_view input) {
    // Any other length, counted in characters, is a mistake of the caller, which stops the process as designed.
    if (std::ranges::any_of(input, [](char letter) { return static_cast<unsigned char>(letter) > 127; })) return;
    const auto digits = input.substr(input.starts_with('#') ? 1 : 0);
    if (digits.size() != 3 && digits.size() != 6) return;
    const auto colour = vl_colorWithHexString(std::string(input));
    require(colour.alpha == 1.0F, "a colour without alpha is opaque");
}

void fuzzURL(std::string_view input) {
    const std::string text(input);
    if (const auto url = NSURL::URLWithString(text)) {
        require(url->absoluteString() == text, "a URL keeps its string");
        url->scheme();
        url->host();
        url->port();
        url->path();
        url->query();
    }
    const auto base = NSURL::URLWithString("https://service.example/v1/");
    NSURLComponents components;
    components.setPath(text);
    components.setQueryItems({{"name", text}, {text, "value"}});
    const auto resolved = components.URLRelativeToURL(*base);
    require(resolved.host() == "service.example", "a path cannot change the host");
    require(resolved.scheme() == "https", "a path cannot change the scheme");
}

}  // namespace vorlane::fuzz
