#include "Simulator/Phone/PhoneOperations.h"

#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Public/Vorlane.h"
#include "Simulator/Phone/Phone.h"
#include "Simulator/Phone/PhoneInbox.h"
#include "Simulator/Phone/PhoneLaunch.h"
#include "Simulator/Phone/PhoneNotifications.h"
#include "Simulator/Phone/PhoneScreen.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

OperationCall::OperationCall(Phone& phone, std::string name, Value id, Array arguments, bool hasHandler)
    : phone_(phone),
      name_(std::move(name)),
      id_(std::move(id)),
      arguments_(std::move(arguments)),
      hasHandler_(hasHandler) {}

OperationCall OperationCall::callOfLine(Phone& phone, const Dictionary& line) {
    const auto* id = valueForKey(line, "id");
    const auto* handler = valueForKey(line, "handler");
    return {phone,
            stringFrom(requiredField(line, "do"), "do"),
            id ? *id : Value(),
            {},
            !handler || booleanFrom(*handler, "handler")};
}

const Value& OperationCall::argument(std::size_t place) const {
    if (place >= arguments_.size()) throw BadLine("missing " + placeName(place) + " of " + name_);
    return arguments_[place];
}

std::string OperationCall::placeName(std::size_t place) const { return "argument " + std::to_string(place + 1); }

std::string OperationCall::string(std::size_t place) const { return stringFrom(argument(place), placeName(place)); }

std::optional<std::string> OperationCall::optionalString(std::size_t place) const {
    return optionalStringFrom(argument(place), placeName(place));
}

const Dictionary& OperationCall::dictionary(std::size_t place) const {
    return dictionaryFrom(argument(place), placeName(place));
}

std::int64_t OperationCall::integer(std::size_t place) const { return integerFrom(argument(place), placeName(place)); }

Data OperationCall::data(std::size_t place) const { return dataFrom(argument(place), placeName(place)); }

std::optional<double> OperationCall::optionalNumber(std::size_t place) const {
    const auto& value = argument(place);
    return value.is_null() ? std::nullopt : std::optional(numberFrom(value, placeName(place)));
}

std::optional<Dictionary> OperationCall::optionalDictionary(std::size_t place) const {
    const auto& value = argument(place);
    return value.is_null() ? std::nullopt : std::optional(dictionaryFrom(value, placeName(place)));
}

void OperationCall::tell(Array values) const {
    phone_.output().event("result", {{"id", id_},
                                     {"op", name_},
                                     {"values", std::move(values)},
                                     {"main", phone_.device().mainQueue()->isCurrent()}});
}

std::function<void(std::optional<NSError>)> OperationCall::errorHandler() const {
    if (!hasHandler_) return nullptr;
    return [call = *this](const std::optional<NSError>& error) { call.tell({valueOf(error)}); };
}

std::function<void(std::optional<std::string>, std::optional<NSError>)> OperationCall::tagHandler() const {
    if (!hasHandler_) return nullptr;
    return [call = *this](const std::optional<std::string>& value, const std::optional<NSError>& error) {
        call.tell({valueOf(value), valueOf(error)});
    };
}

std::function<void(bool, std::optional<NSError>)> OperationCall::outcomeHandler() const {
    if (!hasHandler_) return nullptr;
    return [call = *this](bool success, const std::optional<NSError>& error) { call.tell({success, valueOf(error)}); };
}

std::function<void(UIBackgroundFetchResult)> OperationCall::fetchHandler() const {
    if (!hasHandler_) return nullptr;
    return [call = *this](UIBackgroundFetchResult result) { call.tell({static_cast<std::uint64_t>(result)}); };
}

std::function<void(const VLUserNotificationSettings&)> OperationCall::notificationSettingsHandler() const {
    if (!hasHandler_) return nullptr;
    return [call = *this](const VLUserNotificationSettings& settings) { call.tell({Value(settings.toDictionary())}); };
}

namespace {

Value initialise(const OperationCall& call) {
    const Dictionary line{{"options", call.dictionary(1)}};
    Vorlane::initialiseSDKWithApplication(call.phone().device().application(),
                                          launchOptionsFrom(call.phone(), call.argument(0)),
                                          sdkOptionsFrom(call.phone(), line));
    return nullptr;
}

Value getURLs(const OperationCall& /*call*/) {
    const auto urls = Vorlane::getURLs();
    return urls ? valueOf(*urls) : Value();
}

Value replaceURLs(const OperationCall& call) {
    Vorlane::setURLs(URLsFrom(call.dictionary(0)));
    return nullptr;
}

Value setTag(const OperationCall& call) {
    const auto type = static_cast<VLTagType>(static_cast<std::uint64_t>(call.integer(2)));
    Vorlane::setTag(call.optionalString(0), call.optionalString(1), type, call.errorHandler());
    return nullptr;
}

Value addCommonJsonData(const OperationCall& call) {
    auto json = call.dictionary(0);
    Vorlane::sharedInstance().addCommonJsonData(json);
    return json;
}

/// An operation without a return value.
template <class Body>
Operation doing(Body body) {
    return [body](const OperationCall& call) {
        body(call);
        return Value();
    };
}

}  // namespace

const std::map<std::string, Operation>& operations() {
    using Call = const OperationCall&;
    static const std::map<std::string, Operation> table =
        withInboxOperations(withScreenOperations(withNotificationOperations({
            {"initialiseSDKWithApplication:launchOptions:sdkOptions:", initialise},
            {"sharedInstance", doing([](Call) { Vorlane::sharedInstance(); })},
            {"setURLs:", replaceURLs},
            {"getURLs", getURLs},
            {"setTrackingId:", doing([](Call call) { Vorlane::setTrackingId(call.optionalString(0)); })},
            {"trackingId", [](Call) { return Value(Vorlane::trackingId()); }},
            {"appKey", [](Call) { return valueOf(Vorlane::appKey()); }},
            {"deviceId", [](Call) { return Value(Vorlane::deviceId()); }},
            {"deviceToken", [](Call) { return valueOf(Vorlane::deviceToken()); }},
            {"setPhash:", doing([](Call call) { Vorlane::setPhash(call.optionalString(0)); })},
            {"phash", [](Call) { return valueOf(Vorlane::phash()); }},
            {"registerEventWithType:label:",
             doing([](Call call) { Vorlane::registerEventWithType(call.string(0), call.optionalString(1)); })},
            {"registerEventWithType:label:phash:", doing([](Call call) {
                 Vorlane::registerEventWithType(call.string(0), call.optionalString(1), call.optionalString(2));
             })},
            {"registerEventWithType:data:",
             doing([](Call call) { Vorlane::registerEventWithType(call.string(0), call.dictionary(1)); })},
            {"registerEventWithType:data:phash:", doing([](Call call) {
                 Vorlane::registerEventWithType(call.string(0), call.dictionary(1), call.optionalString(2));
             })},
            {"getTag:completionHandler:",
             doing([](Call call) { Vorlane::getTag(call.optionalString(0), call.tagHandler()); })},
            {"setTag:value:type:completionHandler:", setTag},
            {"batchSetTags:completionHandler:",
             doing([](Call call) { Vorlane::batchSetTags(call.argument(0), call.errorHandler()); })},
            {"deleteAllTagsWithCompletionHandler:",
             doing([](Call call) { Vorlane::deleteAllTagsWithCompletionHandler(call.errorHandler()); })},
            {"setContainer:withContainerVersion:withContainerVlSdkVersion:", doing([](Call call) {
                 Vorlane::setContainer(call.optionalString(0), call.optionalString(1), call.optionalString(2));
             })},
            {"addCommonJsonData:", addCommonJsonData},
        })));
    return table;
}

}  // namespace vorlane::phone
