#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "Platform/NSError.h"
#include "Platform/UILocalNotification.h"
#include "Public/VLSDKOptions.h"
#include "Public/VLURLs.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

/// Thrown for a line that the phone cannot process; the message is the reason.
class BadLine : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Output.

/// Returns the value with data as {"hex": "00ab10"}, which JSON can represent.
Value printable(const Value& value);
Value valueOf(const std::optional<std::string>& text);
Value valueOf(const std::optional<Data>& data);
/// Returns {"domain", "code", "description", "userInfo"}; null for `nullopt`.
Value valueOf(const std::optional<NSError>& error);
/// Returns every endpoint by the name of its property.
Value valueOf(const VLURLs& urls);

// Input. Each throws BadLine for a value of another type.

const Value& requiredField(const Dictionary& line, const std::string& name);
std::string stringFrom(const Value& value, const std::string& name);
std::optional<std::string> optionalStringFrom(const Value& value, const std::string& name);
double numberFrom(const Value& value, const std::string& name);
std::int64_t integerFrom(const Value& value, const std::string& name);
bool booleanFrom(const Value& value, const std::string& name);
const Dictionary& dictionaryFrom(const Value& value, const std::string& name);
const Array& arrayFrom(const Value& value, const std::string& name);
/// Reads bytes in hexadecimal digits, as a string or as {"hex"}.
Data dataFrom(const Value& value, const std::string& name);
/// Returns the production endpoints, with those that the dictionary names replaced.
std::shared_ptr<VLURLs> URLsFrom(const Dictionary& urls);
/// Reads a notification. Fields that are missing or null are absent.
UILocalNotification notificationFrom(const Value& value, const std::string& name);

}  // namespace vorlane::phone
