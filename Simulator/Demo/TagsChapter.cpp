#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

namespace {

constexpr const char* kGet = "getTag:completionHandler:";
constexpr const char* kSet = "setTag:value:type:completionHandler:";

std::size_t storedTags(Stage& stage) {
    const auto answer = stage.service().get("tags");
    const auto* tags = arrayForKey(answer.get_ref<const Dictionary&>(), "tags");
    return tags ? tags->size() : 0;
}

}  // namespace

void playTags(Stage& stage) {
    stage.call("tag name, a text", kSet, {"name", "Anna", 0});
    stage.call("tag size, a number", kSet, {"size", "42", 1});
    stage.call("tag born, a time", kSet, {"born", "631152000", 2});
    stage.promise("three tags of three types are stored", storedTags(stage) == 3);

    const auto read = stage.call("read the tag size", kGet, {"size"});
    stage.promise("a number is read back in decimal", read == Array{"42", nullptr});

    const auto missing = stage.call("read a tag that does not exist", kGet, {"shoe"});
    stage.promise("reading an unknown tag is an error", missing.size() == 2 && missing[1]["code"] == Value(2) &&
                                                            missing[1]["domain"] == Value("vorlane.sdk.tag"));

    const Array tags{Dictionary{{"name", "colour"}, {"value", "red"}, {"type", "string"}},
                     Dictionary{{"name", "size"}, {"value", "43"}, {"type", "numeric"}}};
    stage.call("two tags at once", "batchSetTags:completionHandler:", Array(1, Value(tags)));
    const auto changed = stage.call("read the tag size again", kGet, {"size"});
    stage.promise("a batch changes existing tags and adds new ones",
                  changed == Array{"43", nullptr} && storedTags(stage) == 4);

    stage.call("delete all tags", "deleteAllTagsWithCompletionHandler:");
    stage.promise("all tags are deleted", storedTags(stage) == 0);
}

}  // namespace vorlane::demo
