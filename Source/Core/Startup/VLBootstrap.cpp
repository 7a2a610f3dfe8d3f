#include "Core/Startup/VLBootstrap.h"

#include <utility>

#include "Core/Startup/VLIOSComponents.h"
#include "Core/Startup/VLServiceComponents.h"
#include "Platform/NSException.h"
#include "Platform/NSObject.h"

namespace vorlane {

std::shared_ptr<VLBootstrap> VLBootstrap::bootstrapWithURLs(const std::shared_ptr<VLURLs>& urls) {
    const std::shared_ptr<VLBootstrap> bootstrap(new VLBootstrap);
    bootstrap->serviceComponents_ =
        std::make_unique<VLServiceComponents>(*bootstrap, std::make_unique<VLIOSComponents>(*bootstrap));
    bootstrap->serviceComponents_->defaultVLServices(urls);
    return bootstrap;
}

VLBootstrap::VLBootstrap() = default;
VLBootstrap::~VLBootstrap() = default;

void VLBootstrap::addComponent(Factory<void> factory, const std::string& name) {
    if (!createBlocks_.contains(name)) registeredNames_.push_back(name);
    createBlocks_[name] = std::move(factory);
}

std::shared_ptr<void> VLBootstrap::getComponent(const std::type_info* type) {
    return type ? getComponentForString(typeName(*type)) : nullptr;
}

std::shared_ptr<void> VLBootstrap::getComponentForString(const std::string& name) {
    if (const auto found = components_.find(name); found != components_.end()) return found->second;
    auto instance = createComponentForString(name);
    if (instance) components_[name] = instance;
    return instance;
}

std::shared_ptr<void> VLBootstrap::createComponentForString(const std::string& name) {
    const auto found = createBlocks_.find(name);
    if (found == createBlocks_.end()) throw NSException("Unregistered Component", "No factory makes a " + name);
    return found->second();
}

std::string VLBootstrap::typeName(const std::type_info& type) { return NSStringFromClass(type); }

}  // namespace vorlane
