#pragma once

namespace vorlane {

class VLBootstrap;

/// Registers the platform objects, each under its class name.
class VLIOSComponents {
public:
    explicit VLIOSComponents(VLBootstrap& bootstrap) : bootstrap_(bootstrap) {}

    /// Registers the URL session, the device, the application, the notification centre and the main bundle, and on
    /// platform 10.0 or later the user notification centre. The URL session's time-out is
    /// `VLURLSession::kTimeoutIntervalForRequest`.
    void defaultUIKitDependencies();
    /// Registers the location manager that all services share.
    void defaultCoreLocationDependencies();

private:
    VLBootstrap& bootstrap_;
};

}  // namespace vorlane
