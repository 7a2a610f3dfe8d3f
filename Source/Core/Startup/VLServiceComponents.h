#pragma once

#include <memory>

namespace vorlane {

class VLBootstrap;
class VLIOSComponents;
class VLURLs;

/// Registers the factories of the library's own services. Each factory takes its collaborators from the registry, so a
/// request for one service makes, depth first, every service that it needs.
class VLServiceComponents {
public:
    VLServiceComponents(VLBootstrap& bootstrap, std::unique_ptr<VLIOSComponents> iosComponents);
    ~VLServiceComponents();

    /// Registers every factory, in the designed order. Makes no instance.
    void defaultVLServices(const std::shared_ptr<VLURLs>& urls);

private:
    void defaultVLServiceDependencies(const std::shared_ptr<VLURLs>& urls);

    /// Registers a T made from the shared instances of its dependencies.
    template <class T, class... Dependencies>
    void add();

    /// Registers `make`, which receives the registry. The factory holds the registry weakly: it returns null once the
    /// registry has been destroyed.
    template <class T, class Make>
    void addFactory(Make make);

    VLBootstrap& bootstrap_;
    const std::unique_ptr<VLIOSComponents> iosComponents_;
};

}  // namespace vorlane
