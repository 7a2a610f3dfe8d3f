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

/// A line that the phone cannot take, with the reason.
class BadLine : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What goes out.

/// The value with its data as {"hex": "00ab10"}, so that JSON can hold it.
Value printable(const Value& value);
Value valueOf(const std::optional<std::string>& text);
Value valueOf(const std::optional<Data>& data);
/// {"domain", "code", "description", "userInfo"}; null for nothing.
Value valueOf(const std::optional<NSError>& error);
/// Every endpoint by the name of its property.
Value valueOf(const VLURLs& urls);

// What comes in. Each throws BadLine for a value of another kind.

const Value& requiredField(const Dictionary& line, const std::string& name);
std::string stringFrom(const Value& value, const std::string& name);
std::optional<std::string> optionalStringFrom(const Value& value, const std::string& name);
double numberFrom(const Value& value, const std::string& name);
std::int64_t integerFrom(const Value& value, const std::string& name);
bool booleanFrom(const Value& value, const std::string& name);
const Dictionary& dictionaryFrom(const Value& value, const std::string& name);
const Array& arrayFrom(const Value& value, const std::string& name);
/// Bytes in hexadecimal digits, as a text or as {"hex"}.
Data dataFrom(const Value& value, const std::string& name);
/// The production set with the endpoints that the dictionary names replaced.
std::shared_ptr<VLURLs> URLsFrom(const Dictionary& urls);
/// Its fields under their own names; fields that are missing or null are absent.
UILocalNotification notificationFrom(const Value& value, const std::string& name);

}  // namespace vorlane::phone
