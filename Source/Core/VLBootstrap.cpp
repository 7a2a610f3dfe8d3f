#include "Core/VLBootstrap.h"

#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

#include "Core/VLIOSComponents.h"
#include "Core/VLServiceComponents.h"
#include "Platform/NSException.h"

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

std::string VLBootstrap::typeName(const std::type_info& type) {
    // Read off the mangled name, such as N7vorlane10VLSettingsE: the last of its names, each behind its length.
    // Start-up asks for a hundred of them, and demangling them whole would be a good part of it.
    std::string_view mangled = type.name();
    if (mangled.starts_with('N')) mangled.remove_prefix(1);
    std::string_view name = mangled;
    std::size_t length = 0;
    while (true) {
        const auto [digitsEnd, error] = std::from_chars(mangled.data(), mangled.data() + mangled.size(), length);
        if (error != std::errc()) return std::string(name);
        mangled.remove_prefix(static_cast<std::size_t>(digitsEnd - mangled.data()));
        name = mangled.substr(0, length);
        mangled.remove_prefix(name.size());
    }
}

}  // namespace vorlane
