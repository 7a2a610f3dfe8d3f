# The shared library exports names of namespace vorlane only: everything that the installed headers declare, and no internal
# class. Its soname is the major version.
source "$(dirname "$0")/common.sh"
exported=$("$NM" --dynamic --defined-only "$LIBRARY" | cut -d " " -f 2- | c++filt)
strangers=$(grep -vE '^[A-Za-z] ((typeinfo( name)?|vtable|VTT|guard variable) for |(non-)?virtual thunk to )?vorlane::|^A VORLANE_2$' \
    <<<"$exported" || true)
[[ -z $strangers ]] || fail "exported without a header: $strangers"
# grep reads to the end: objdump fails when its pipe closes early.
objdump -p "$LIBRARY" | grep -E "SONAME +libvorlane\.so\.${VERSION%%.*}$" >/dev/null || fail "wrong soname"

# Each exported class has a compiled function or a vtable.
headers=("$SOURCE"/Source/Public/*.h "$SOURCE"/Source/Platform/*.h "$SOURCE"/Source/Platform/Linux/LinuxPlatform.h)
classes=$(grep -hoP '^(class|struct) VORLANE_EXPORT \K\w+' "${headers[@]}")
[[ $(wc -l <<<"$classes") -gt 30 ]] || fail "the headers name only these classes: $classes"
for class in $classes; do
    grep -qE " (vtable for )?vorlane::$class(::|@)" <<<"$exported" || fail "no function of $class is exported"
done

# The operations that an application calls, and those of the objects that it passes or receives.
for name in logMessage onMainQueue \
    Vorlane::{initialiseSDKWithApplication,registerEventWithType,setTag,setURLs} \
    Vorlane::{didRegisterForRemoteNotificationsWithDeviceToken,unregisterFromRemoteNotificationsWithCompletionHandler} \
    Vorlane::{didReceiveRemoteNotification,didRegisterUserNotificationSettings,performFetchWithCompletionHandler} \
    Vorlane::{getNotificationSettingsWithCompletionHandler,scheduleLocalNotification,didReceiveLocalNotification} \
    Vorlane::{cancelPendingLocalNotification,cancelAllPendingLocalNotifications} \
    VLDeviceTokenHelper::hexStringToData \
    VLUserNotificationSettings::{settingsWithAuthorisation,toDictionary,settingsFromDictionary} \
    VLUserNotificationSettings::{isEqualToSettings,willNotificationsBeVisible,isProvisionallyAuthorised} \
    UILocalNotification::{UILocalNotification,toDictionary,fromDictionary,description,operator==} \
    UIApplication::{UIApplication,scheduleLocalNotification,scheduledLocalNotifications} \
    UIApplication::{cancelLocalNotification,cancelAllLocalNotifications}; do
    grep -qE "^T vorlane::$name[[(]" <<<"$exported" || fail "$name is not exported"
done

# Classes without an installed header.
insiders=$(find "$SOURCE"/Source/{Core,Network,Tracking,Notifications,Categories} -name '*.h' -exec grep -hoP \
    '^(class|struct) \K\w+(?=.*[{:]$)' {} + | sort -u)
for class in $insiders; do
    ! grep -qE " (vtable for )?vorlane::$class(::|@)" <<<"$exported" || fail "$class is exported, though it has no header"
done
