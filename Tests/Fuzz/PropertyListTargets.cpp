#include <optional>
#include <string>

#include "Categories/NSDictionary+VLJSON.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace vorlane::fuzz {

namespace {

Data dataOf(std::string_view input) { return {input.begin(), input.end()}; }

/// What the library writes, it reads back.
void requireRoundTrip(const Value& value) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(value);
    if (written.empty()) return;
    const auto again = NSPropertyListSerialization::propertyListWithData(written);
    require(again.has_value(), "a property list that was written can be read");
    require(NSPropertyListSerialization::dataWithPropertyList(*again) == written,
            "a property list that was read is written alike");
}

}  // namespace

void fuzzPropertyList(std::string_view input) {
    if (const auto value = NSPropertyListSerialization::propertyListWithData(dataOf(input))) requireRoundTrip(*value);
}

void fuzzConvertedPropertyList(std::string_view input) {
    std::optional<NSError> error;
    if (const auto object = vl_dictionaryWithJSON(std::string(input), error)) requireRoundTrip(Value(*object));
}

}  // namespace vorlane::fuzz
