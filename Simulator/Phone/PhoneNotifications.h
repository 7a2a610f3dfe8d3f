#pragma once

#include <map>
#include <string>

#include "Platform/UILocalNotification.h"
#include "Public/VLValue.h"
#include "Simulator/Phone/PhoneOperations.h"

namespace vorlane::phone {

/// Returns the notification with this handle. Throws BadLine for an unknown handle.
UILocalNotification notificationWithHandle(Phone& phone, const Value& handle);

/// Returns the table with the operations of `Vorlane` for notifications added.
std::map<std::string, Operation> withNotificationOperations(std::map<std::string, Operation> table);

// Values for queries.
Value scheduledNotifications(Phone& phone);
Value deliveredNotifications(Phone& phone);
Value openPrompts(Phone& phone);

}  // namespace vorlane::phone
