#pragma once

namespace vorlane {

class VLBootstrap;

/// Registers the platform's objects with the registry, each under its class name.
class VLIOSComponents {
public:
    explicit VLIOSComponents(VLBootstrap& bootstrap) : bootstrap_(bootstrap) {}

    /// The URL session (10 s without progress is a time-out), the device, the application, the notification centre, the
    /// bundle; on platforms from 10 on the notification centre.
    void defaultUIKitDependencies();
    /// The location manager, which all services share.
    void defaultCoreLocationDependencies();

private:
    VLBootstrap& bootstrap_;
};

}  // namespace vorlane
