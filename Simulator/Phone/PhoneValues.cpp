#include "Simulator/Phone/PhoneValues.h"

#include <fmt/format.h>

#include <map>
#include <vector>

#include "Categories/NSDictionary+VLLookup.h"
#include "Public/VLURLsProduction.h"

namespace vorlane::phone {

namespace {

constexpr const char* kHexDigits = "0123456789abcdef";

[[noreturn]] void failKind(const std::string& name, const char* kind) { throw BadLine(name + " must be " + kind); }

Value hexOf(const Data& data) {
    std::string text;
    for (const auto byte : data) {
        text += kHexDigits[byte >> 4U];
        text += kHexDigits[byte & 0xFU];
    }
    return Dictionary{{"hex", text}};
}

/// The accessors of one endpoint.
struct Endpoint {
    NSURL (VLURLs::*get)() const;
    void (VLURLs::*set)(NSURL);
};

const std::map<std::string, Endpoint>& endpoints() {
    static const std::map<std::string, Endpoint> table = {
        {"deviceRegistrationUrl", {&VLURLs::deviceRegistrationUrl, &VLURLs::setDeviceRegistrationUrl}},
        {"mdnUrl", {&VLURLs::mdnUrl, &VLURLs::setMdnUrl}},
        {"getTagUrl", {&VLURLs::getTagUrl, &VLURLs::setGetTagUrl}},
        {"setTagUrl", {&VLURLs::setTagUrl, &VLURLs::setSetTagUrl}},
        {"deleteTagUrl", {&VLURLs::deleteTagUrl, &VLURLs::setDeleteTagUrl}},
        {"geoRegionsUrl", {&VLURLs::geoRegionsUrl, &VLURLs::setGeoRegionsUrl}},
        {"geoContentUrl", {&VLURLs::geoContentUrl, &VLURLs::setGeoContentUrl}},
        {"beaconContentUrl", {&VLURLs::beaconContentUrl, &VLURLs::setBeaconContentUrl}},
        {"interstitialUrl", {&VLURLs::interstitialUrl, &VLURLs::setInterstitialUrl}},
        {"contentUrl", {&VLURLs::contentUrl, &VLURLs::setContentUrl}},
        {"inboxUrl", {&VLURLs::inboxUrl, &VLURLs::setInboxUrl}},
        {"configUrl", {&VLURLs::configUrl, &VLURLs::setConfigUrl}},
        {"eventsUrl", {&VLURLs::eventsUrl, &VLURLs::setEventsUrl}},
        {"sessionStartUrl", {&VLURLs::sessionStartUrl, &VLURLs::setSessionStartUrl}},
        {"sessionEndUrl", {&VLURLs::sessionEndUrl, &VLURLs::setSessionEndUrl}},
        {"changeTrackingIdUrl", {&VLURLs::changeTrackingIdUrl, &VLURLs::setChangeTrackingIdUrl}},
    };
    return table;
}

}  // namespace

Value printable(const Value& value) {
    if (value.is_binary()) return hexOf(value.get_binary());
    if (!value.is_structured()) return value;
    Value copy = value;
    std::vector<Value*> pending{&copy};
    while (!pending.empty()) {
        Value* container = pending.back();
        pending.pop_back();
        for (auto& element : *container) {
            if (element.is_binary()) element = hexOf(element.get_binary());
            if (element.is_structured()) pending.push_back(&element);
        }
    }
    return copy;
}

Value valueOf(const std::optional<std::string>& text) { return text ? Value(*text) : Value(); }

Value valueOf(const std::optional<Data>& data) { return data ? hexOf(*data) : Value(); }

Value valueOf(const std::optional<NSError>& error) {
    if (!error) return Value();
    return Dictionary{{"domain", error->domain()},
                      {"code", error->code()},
                      {"description", error->localizedDescription()},
                      {"userInfo", error->userInfo()}};
}

Value valueOf(const VLURLs& urls) {
    Dictionary dictionary;
    for (const auto& [name, endpoint] : endpoints()) dictionary[name] = (urls.*endpoint.get)().absoluteString();
    return dictionary;
}

const Value& requiredField(const Dictionary& line, const std::string& name) {
    const auto* value = valueForKey(line, name);
    if (!value) throw BadLine("missing field " + name);
    return *value;
}

std::string stringFrom(const Value& value, const std::string& name) {
    if (!value.is_string()) failKind(name, "a string");
    return value.get<std::string>();
}

std::optional<std::string> optionalStringFrom(const Value& value, const std::string& name) {
    if (value.is_null()) return std::nullopt;
    return stringFrom(value, name);
}

double numberFrom(const Value& value, const std::string& name) {
    if (!value.is_number()) failKind(name, "a number");
    return value.get<double>();
}

std::int64_t integerFrom(const Value& value, const std::string& name) {
    const auto integer = integerValue(value);
    if (!integer) failKind(name, "a number");
    return *integer;
}

bool booleanFrom(const Value& value, const std::string& name) {
    if (!value.is_boolean()) failKind(name, "true or false");
    return value.get<bool>();
}

const Dictionary& dictionaryFrom(const Value& value, const std::string& name) {
    if (!value.is_object()) failKind(name, "an object");
    return value.get_ref<const Dictionary&>();
}

const Array& arrayFrom(const Value& value, const std::string& name) {
    if (!value.is_array()) failKind(name, "an array");
    return value.get_ref<const Array&>();
}

UILocalNotification notificationFrom(const Value& value, const std::string& name) {
    Dictionary given;
    const auto isText = [](const Value& field) { return field.is_string(); };
    const auto isNumber = [](const Value& field) { return field.is_number(); };
    const auto isObject = [](const Value& field) { return field.is_object(); };
    using Check = bool (*)(const Value&);
    static const std::map<std::string, Check> fields = {
        {"fireDate", isNumber},  {"timeZone", isText},  {"alertBody", isText},
        {"alertAction", isText}, {"soundName", isText}, {"applicationIconBadgeNumber", isNumber},
        {"userInfo", isObject},  {"handle", isNumber},
    };
    for (const auto& [key, field] : dictionaryFrom(value, name)) {
        const auto check = fields.find(key);
        if (check == fields.end()) throw BadLine("a notification has no field " + key);
        if (field.is_null()) continue;
        if (!check->second(field)) throw BadLine(key + " of the notification is of another kind");
        given[key] = field;
    }
    return UILocalNotification::fromDictionary(given);
}

Data dataFrom(const Value& value, const std::string& name) {
    const auto text = value.is_object() ? stringFrom(requiredField(dictionaryFrom(value, name), "hex"), name)
                                        : stringFrom(value, name);
    if (text.size() % 2 != 0 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        failKind(name, "pairs of hexadecimal digits");
    }
    Data data;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        data.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return data;
}

std::shared_ptr<VLURLs> URLsFrom(const Dictionary& urls) {
    auto set = std::make_shared<VLURLsProduction>();
    for (const auto& [name, value] : urls) {
        const auto endpoint = endpoints().find(name);
        if (endpoint == endpoints().end()) throw BadLine("unknown endpoint " + name);
        auto url = NSURL::URLWithString(stringFrom(value, name));
        if (!url) failKind(name, "an absolute URL");
        ((*set).*endpoint->second.set)(*url);
    }
    return set;
}

}  // namespace vorlane::phone
