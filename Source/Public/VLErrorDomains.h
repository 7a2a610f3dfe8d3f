#pragma once

namespace vorlane {

/// Tags: 0 blank name, 1 unknown tracking id, 2 no such tag.
inline constexpr const char* VLErrorDomainTag = "vorlane.sdk.tag";
/// The inbox: 0 database failure, or no message given.
inline constexpr const char* VLErrorDomainInbox = "vorlane.sdk.inbox";
/// The HTTP layer: 0 nothing to parse, 1 no HTTP response, else the HTTP status code.
inline constexpr const char* VLErrorDomainNetwork = "vorlane.sdk.network";
/// Interstitials: 0 invalid placement, 1 no view controller, 2 unsuitable view controller.
inline constexpr const char* VLErrorDomainInterstitial = "vorlane.sdk.interstitial";
/// For the host application's own use.
inline constexpr const char* VLErrorDomainDeviceRegistration = "vorlane.sdk.deviceregistration";

}  // namespace vorlane
