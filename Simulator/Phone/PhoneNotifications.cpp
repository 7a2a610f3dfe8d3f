#include "Simulator/Phone/PhoneNotifications.h"

#include <utility>

#include "Public/Vorlane.h"
#include "Simulator/Phone/Phone.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

Value listOf(const std::map<SimulatedApplication::Handle, UILocalNotification>& notifications) {
    Array list;
    for (const auto& [handle, notification] : notifications) {
        list.emplace_back(SimulatedApplication::notificationFields(handle, notification));
    }
    return list;
}

Value registerToken(const OperationCall& call) {
    Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(call.phone().device().application(), call.data(0),
                                                              call.errorHandler());
    return nullptr;
}

Value unregister(const OperationCall& call) {
    Vorlane::unregisterFromRemoteNotificationsWithCompletionHandler(call.outcomeHandler());
    return nullptr;
}

Value receiveRemote(const OperationCall& call) {
    Vorlane::didReceiveRemoteNotification(call.phone().device().application(), call.dictionary(0));
    return nullptr;
}

/// The argument is the types, as a number.
Value registerSettings(const OperationCall& call) {
    auto& application = call.phone().device().simulatedApplication();
    application.setUserNotificationTypes(static_cast<std::uint64_t>(call.integer(0)));
    Vorlane::didRegisterUserNotificationSettings(call.phone().device().application(),
                                                 application.currentUserNotificationSettings());
    return nullptr;
}

Value performFetch(const OperationCall& call) {
    Vorlane::performFetchWithCompletionHandler(call.phone().device().application(), call.fetchHandler());
    return nullptr;
}

Value getSettings(const OperationCall& call) {
    Vorlane::getNotificationSettingsWithCompletionHandler(call.notificationSettingsHandler());
    return nullptr;
}

Value schedule(const OperationCall& call) {
    const auto notification =
        Vorlane::scheduleLocalNotification(call.string(0), call.integer(1), call.optionalString(2),
                                           call.optionalNumber(3), call.optionalDictionary(4), call.optionalString(5));
    if (!notification) return nullptr;
    auto& application = call.phone().device().simulatedApplication();
    return SimulatedApplication::notificationFields(application.handleOf(*notification), *notification);
}

Value cancel(const OperationCall& call) {
    Vorlane::cancelPendingLocalNotification(notificationWithHandle(call.phone(), call.argument(0)));
    return nullptr;
}

Value cancelAll(const OperationCall& /*call*/) {
    Vorlane::cancelAllPendingLocalNotifications();
    return nullptr;
}

Value receiveLocal(const OperationCall& call) {
    Vorlane::didReceiveLocalNotification(call.phone().device().application(),
                                         notificationWithHandle(call.phone(), call.argument(0)));
    return nullptr;
}

}  // namespace

UILocalNotification notificationWithHandle(Phone& phone, const Value& handle) {
    // A notification of a reply or an event is accepted, too.
    const auto number =
        integerFrom(handle.is_object() ? requiredField(dictionaryFrom(handle, "handle"), "handle") : handle, "handle");
    const auto found = phone.device().simulatedApplication().notificationWithHandle(static_cast<std::uint64_t>(number));
    if (!found) throw BadLine("no notification has the handle " + std::to_string(number));
    return *found;
}

std::map<std::string, Operation> withNotificationOperations(std::map<std::string, Operation> table) {
    table.merge(std::map<std::string, Operation>{
        {"application:didRegisterForRemoteNotificationsWithDeviceToken:completionHandler:", registerToken},
        {"unregisterFromRemoteNotificationsWithCompletionHandler:", unregister},
        {"application:didReceiveRemoteNotification:", receiveRemote},
        {"application:didRegisterUserNotificationSettings:", registerSettings},
        {"application:performFetchWithCompletionHandler:", performFetch},
        {"getNotificationSettingsWithCompletionHandler:", getSettings},
        {"scheduleLocalNotification:badge:campaign:date:metadata:action:", schedule},
        {"cancelPendingLocalNotification:", cancel},
        {"cancelAllPendingLocalNotifications", cancelAll},
        {"application:didReceiveLocalNotification:", receiveLocal},
    });
    return table;
}

Value scheduledNotifications(Phone& phone) { return listOf(phone.device().simulatedApplication().scheduledByHandle()); }

Value deliveredNotifications(Phone& phone) { return listOf(phone.device().simulatedApplication().deliveredByHandle()); }

Value openPrompts(Phone& phone) {
    Array prompts;
    for (const auto& prompt : phone.device().simulatedUser().openPrompts()) {
        prompts.emplace_back(Dictionary{{"prompt", prompt.number}, {"kind", prompt.kind}, {"options", prompt.options}});
    }
    return prompts;
}

}  // namespace vorlane::phone
