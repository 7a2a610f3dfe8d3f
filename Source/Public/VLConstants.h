#pragma once

namespace vorlane {

/// The build of the library. The version reported to the service is another one, "2.0.1".
inline constexpr const char* VorlaneVersionString = "@(#)PROGRAM:Vorlane  PROJECT:Vorlane-28\n";
inline constexpr double VorlaneVersionNumber = 28.0;

inline constexpr const char* VL_HTTP_GET = "GET";
inline constexpr const char* VL_HTTP_POST = "POST";
inline constexpr const char* VL_HTTP_PUT = "PUT";
inline constexpr const char* VL_HTTP_DELETE = "DELETE";

/// The key of a notification's phash in its user info.
inline constexpr const char* VL_NOTIFICATION_KEY_PHASH = "p";
/// The key of a notification's action in its user info.
inline constexpr const char* VL_NOTIFICATION_KEY_ACTION = "vl_ac";
/// The action that opens the rich inbox.
inline constexpr const char* VL_NOTIFICATION_ACTION_INBOX = "ri";

/// The notification that the view controller of an interstitial posts when it has left the screen.
inline constexpr const char* VLNotificationInterstitialWasDismissed = "VLNotificationInterstitialWasDismissed";

/// The names of the services in the remote configuration.
inline constexpr const char* VLCONFIGSERVICEGEO = "geo_regions";
inline constexpr const char* VLCONFIGSERVICEBEACON = "beacon";
inline constexpr const char* VLCONFIGSERVICEPERMISSION = "permission";
inline constexpr const char* VLCONFIGSERVICEINBOX = "rich_inbox";

/// Precedes every HTML page that the library passes to the application.
inline constexpr const char* VIEWPORT_META_TAG = R"(<meta name="viewport" content="initial-scale=1.0" />)";

}  // namespace vorlane
