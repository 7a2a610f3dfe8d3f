#pragma once

namespace vorlane {

/// Errors of tags. Codes: 0 the name is `nullopt` or empty, 1 the service does not know the tracking id, 2 the tag does
/// not exist.
inline constexpr const char* VLErrorDomainTag = "vorlane.sdk.tag";
/// Errors of the inbox. Code 0: the database could not be changed, or the message is null.
inline constexpr const char* VLErrorDomainInbox = "vorlane.sdk.inbox";
/// Errors of requests. Codes: 0 the answer is empty, 1 the answer is not HTTP, otherwise the HTTP status code.
inline constexpr const char* VLErrorDomainNetwork = "vorlane.sdk.network";
/// Errors of interstitials. Codes: 0 invalid placement, 1 the view controller is null, 2 the object is not a suitable
/// view controller.
inline constexpr const char* VLErrorDomainInterstitial = "vorlane.sdk.interstitial";
/// For the application's own use. The library reports no errors in this domain.
inline constexpr const char* VLErrorDomainDeviceRegistration = "vorlane.sdk.deviceregistration";

}  // namespace vorlane
