#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Platform/UIApplication.h"
#include "Public/VLUserNotificationSettings.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

class Phone;

/// One call of a class operation: its arguments, and the handlers that report the results of its completion handler.
class OperationCall {
public:
    OperationCall(Phone& phone, std::string name, Value id, Array arguments, bool hasHandler);

    /// Makes the call of a command that passes a handler itself: its name is the command's, and it has no arguments.
    static OperationCall callOfLine(Phone& phone, const Dictionary& line);

    Phone& phone() const { return phone_; }
    bool hasHandler() const { return hasHandler_; }

    // The argument at an index. Each throws BadLine if it is missing or of another type.
    const Value& argument(std::size_t place) const;
    std::string string(std::size_t place) const;
    /// Returns `nullopt` for null.
    std::optional<std::string> optionalString(std::size_t place) const;
    const Dictionary& dictionary(std::size_t place) const;
    std::int64_t integer(std::size_t place) const;
    Data data(std::size_t place) const;
    /// Returns `nullopt` for null.
    std::optional<double> optionalNumber(std::size_t place) const;
    std::optional<Dictionary> optionalDictionary(std::size_t place) const;

    /// Writes the results of a completion handler as an event.
    void tell(Array values) const;

    /// Handlers that write their arguments as an event; empty if the line asked for no handler.
    std::function<void(std::optional<NSError>)> errorHandler() const;
    std::function<void(std::optional<std::string>, std::optional<NSError>)> tagHandler() const;
    std::function<void(bool, std::optional<NSError>)> outcomeHandler() const;
    std::function<void(UIBackgroundFetchResult)> fetchHandler() const;
    std::function<void(const VLUserNotificationSettings&)> notificationSettingsHandler() const;

private:
    std::string placeName(std::size_t place) const;

    Phone& phone_;
    std::string name_;
    Value id_;
    Array arguments_;
    bool hasHandler_;
};

using Operation = std::function<Value(const OperationCall& call)>;

/// All class operations of `Vorlane` by full labelled name. Add a new operation here.
const std::map<std::string, Operation>& operations();

}  // namespace vorlane::phone
