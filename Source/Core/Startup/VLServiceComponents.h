#pragma once

#include <memory>

namespace vorlane {

class VLBootstrap;
class VLIOSComponents;
class VLURLs;

/// Registers the factories of the library's own services with the registry. Each factory takes its collaborators from
/// the registry, so asking for one service makes, depth first, every service that it needs.
class VLServiceComponents {
public:
    VLServiceComponents(VLBootstrap& bootstrap, std::unique_ptr<VLIOSComponents> iosComponents);
    ~VLServiceComponents();

    void defaultVLServices(const std::shared_ptr<VLURLs>& urls);

private:
    void defaultVLServiceDependencies(const std::shared_ptr<VLURLs>& urls);

    /// Registers a factory that holds the registry weakly: one that outlives its registry makes nothing.
    template <class Make>
    void add(Make make);

    VLBootstrap& bootstrap_;
    const std::unique_ptr<VLIOSComponents> iosComponents_;
};

}  // namespace vorlane
