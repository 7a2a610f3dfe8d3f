#include "Simulator/Platform/SimulatedMessage.h"

#include "Simulator/Platform/Internal/PercentEncoding.h"

namespace vorlane {

Dictionary SimulatedMessage::toDictionary(const std::string& appKey) const {
    Dictionary message{{"appkey", appKey}, {"pushtext", percentEncoded(text)}};
    if (phash) message["phash"] = *phash;
    auto content = metadata;
    if (sound) content["sound"] = *sound;
    if (!content.empty()) {
        message["messagecontent"] =
            percentEncoded(Value(content).dump(-1, ' ', false, Value::error_handler_t::replace));
    }
    return message;
}

}  // namespace vorlane
