#include "Simulator/Phone/Phone.h"

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/NSException.h"
#include "Public/Vorlane.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneLogger.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

SimulatedPhone::Options deviceOptions(const PhoneOptions& options) {
    return {.documentsFolder = options.dataDirectory,
            .systemVersion = options.systemVersion,
            .virtualClock = options.virtualClock,
            .realHTTP = true,
            .infoDictionary = options.info,
            .resourceFolder = options.resources};
}

/// Null if the command line names no endpoints.
std::shared_ptr<VLURLs> endpointsFrom(const PhoneOptions& options) {
    if (options.serviceOrigin) {
        return VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString(*options.serviceOrigin));
    }
    return options.urls.empty() ? nullptr : URLsFrom(options.urls);
}

}  // namespace

Phone::Phone(const PhoneOptions& options)
    : options_(options), device_(std::make_shared<SimulatedPhone>(deviceOptions(options))), commands_(allCommands()) {
    // First, because it throws for an unusable endpoint, and nothing must use this object then.
    const auto endpoints = endpointsFrom(options_);
    Platform::install(device_);
    device_->simulatedApplication().setEventObserver(
        [this](const std::string& event, const Dictionary& fields) { output_.event(event, fields); });
    device_->simulatedApplication().setUserNotificationSettingsObserver([this](const auto& settings) {
        Vorlane::didRegisterUserNotificationSettings(device_->application(), settings);
    });
    VLLog::sharedInstance().addLogger(std::make_shared<PhoneLogger>(output_));
    if (endpoints) Vorlane::setURLs(endpoints);
}

Phone::~Phone() { Platform::shutdown(); }

void Phone::take(const std::string& line) {
    std::optional<NSError> error;
    const auto parsed = vl_dictionaryWithJSON(line, error);
    if (!parsed) {
        output_.error(nullptr, error ? error->localizedDescription() : "not a JSON object");
        return;
    }
    const auto* id = valueForKey(*parsed, "id");
    answer(*parsed, id ? *id : Value());
}

void Phone::answer(const Dictionary& line, const Value& id) {
    try {
        const auto word = stringFrom(requiredField(line, "do"), "do");
        const auto command = commands_.find(word);
        if (command == commands_.end()) throw BadLine("unknown word " + word);
        auto value = command->second(*this, line);
        device_->settleQueues();
        output_.reply(id, std::move(value));
    } catch (const NSException& exception) {
        device_->settleQueues();
        output_.exception(id, exception.name(), exception.reason());
    } catch (const std::exception& exception) {
        output_.error(id, exception.what());
    }
}

}  // namespace vorlane::phone
