#pragma once

namespace vorlane {

/// The build of the framework; two blanks stand before "PROJECT".
inline constexpr const char* VorlaneVersionString = "@(#)PROGRAM:Vorlane  PROJECT:Vorlane-28\n";
inline constexpr double VorlaneVersionNumber = 28.0;

inline constexpr const char* VL_HTTP_GET = "GET";
inline constexpr const char* VL_HTTP_POST = "POST";
inline constexpr const char* VL_HTTP_PUT = "PUT";
inline constexpr const char* VL_HTTP_DELETE = "DELETE";

/// A notification's user-info key that holds its phash.
inline constexpr const char* VL_NOTIFICATION_KEY_PHASH = "p";
/// A notification's user-info key that names an action.
inline constexpr const char* VL_NOTIFICATION_KEY_ACTION = "vl_ac";
/// The action: open the rich inbox.
inline constexpr const char* VL_NOTIFICATION_ACTION_INBOX = "ri";

/// Names of the services in the remote configuration.
inline constexpr const char* VLCONFIGSERVICEGEO = "geo_regions";
inline constexpr const char* VLCONFIGSERVICEBEACON = "beacon";
inline constexpr const char* VLCONFIGSERVICEPERMISSION = "permission";
inline constexpr const char* VLCONFIGSERVICEINBOX = "rich_inbox";

/// Stands in front of every page of HTML that the library hands out.
inline constexpr const char* VIEWPORT_META_TAG = R"(<meta name="viewport" content="initial-scale=1.0" />)";

}  // namespace vorlane
