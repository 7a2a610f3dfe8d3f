#pragma once

#include <map>
#include <string>

#include "Platform/UILocalNotification.h"
#include "Public/VLValue.h"
#include "Simulator/Phone/PhoneOperations.h"

namespace vorlane::phone {

/// The notification object of a handle. Throws BadLine for none.
UILocalNotification notificationWithHandle(Phone& phone, const Value& handle);

/// The table with the operations of `Vorlane` that concern notifications.
std::map<std::string, Operation> withNotificationOperations(std::map<std::string, Operation> table);

// What a query sees.
Value scheduledNotifications(Phone& phone);
Value deliveredNotifications(Phone& phone);
Value openPrompts(Phone& phone);

}  // namespace vorlane::phone
