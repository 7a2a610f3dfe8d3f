// Commands for the library itself.

#include "Categories/NSDictionary+VLLookup.h"
#include "Public/Vorlane.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneOperations.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

Array argumentsFrom(const Dictionary& line) {
    const auto* field = valueForKey(line, "args");
    if (!field) return {};
    if (!field->is_array()) throw BadLine("args must be an array");
    return field->get_ref<const Array&>();
}

Value call(Phone& phone, const Dictionary& line) {
    const auto name = stringFrom(requiredField(line, "op"), "op");
    const auto operation = operations().find(name);
    if (operation == operations().end()) throw BadLine("unknown operation " + name);
    const auto* handler = valueForKey(line, "handler");
    const auto* id = valueForKey(line, "id");
    const OperationCall operationCall(phone, name, id ? *id : Value(), argumentsFrom(line),
                                      !handler || booleanFrom(*handler, "handler"));
    return operation->second(operationCall);
}

Value setURLs(Phone& /*phone*/, const Dictionary& line) {
    Vorlane::setURLs(URLsFrom(dictionaryFrom(requiredField(line, "urls"), "urls")));
    return nullptr;
}

Value log(Phone& /*phone*/, const Dictionary& line) {
    const auto message = stringFrom(requiredField(line, "message"), "message");
    const auto level = integerFrom(requiredField(line, "level"), "level");
    const auto* payload = valueForKey(line, "payload");
    VLLog::sharedInstance().logMessage(message, payload ? std::optional<Value>(*payload) : std::nullopt,
                                       static_cast<VLLogLevel>(static_cast<std::uint64_t>(level)));
    return nullptr;
}

}  // namespace

Phone::Commands libraryCommands() { return {{"call", call}, {"setURLs", setURLs}, {"log", log}}; }

}  // namespace vorlane::phone
