#include "Core/VLServiceComponents.h"

#include <type_traits>
#include <utility>

#include "Core/VLBootstrap.h"
#include "Core/VLIOSComponents.h"
#include "Core/VLLifeCycleManager.h"
#include "Core/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Platform/NSBundle.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSURLSession.h"
#include "Platform/UIApplication.h"
#include "Platform/UIDevice.h"
#include "Public/VLURLs.h"
#include "Tracking/VLConfigService.h"
#include "Tracking/VLEventService.h"
#include "Tracking/VLSessionService.h"
#include "Tracking/VLTagsService.h"

namespace vorlane {

namespace {

std::shared_ptr<VLSettings> createSettings(VLBootstrap& components) {
    return std::make_shared<VLSettings>(components.getComponent<UIDevice>());
}

std::shared_ptr<VLPayloadBuilder> createPayloadBuilder(VLBootstrap& components) {
    return std::make_shared<VLPayloadBuilder>(components.getComponent<UIDevice>(),
                                              components.getComponent<VLSettings>());
}

std::shared_ptr<VLURLSession> vlURLSession(VLBootstrap& components) {
    return std::make_shared<VLURLSession>(components.getComponent<NSURLSession>(),
                                          components.getComponent<UIApplication>());
}

std::shared_ptr<VLEventService> createEventService(VLBootstrap& components) {
    return std::make_shared<VLEventService>(
        components.getComponent<VLSettings>(), components.getComponent<VLURLBuilder>(),
        components.getComponent<VLPayloadBuilder>(), components.getComponent<VLURLSession>());
}

std::shared_ptr<VLConfigService> createConfigService(VLBootstrap& components) {
    return std::make_shared<VLConfigService>(components.getComponent<VLSettings>(),
                                             components.getComponent<VLURLBuilder>(),
                                             components.getComponent<VLURLSession>());
}

std::shared_ptr<VLTagsService> createTagsService(VLBootstrap& components) {
    return std::make_shared<VLTagsService>(
        components.getComponent<VLSettings>(), components.getComponent<VLURLBuilder>(),
        components.getComponent<VLPayloadBuilder>(), components.getComponent<VLURLSession>());
}

std::shared_ptr<VLSessionService> createSessionService(VLBootstrap& components) {
    return std::make_shared<VLSessionService>(
        components.getComponent<VLSettings>(), components.getComponent<VLURLSession>(),
        components.getComponent<VLURLBuilder>(), components.getComponent<VLPayloadBuilder>(),
        components.getComponent<NSBundle>());
}

std::shared_ptr<VLLifeCycleManager> createLifeCycleManager(VLBootstrap& components) {
    return std::make_shared<VLLifeCycleManager>(
        components.getComponent<VLSettings>(), components.getComponent<VLSessionService>(),
        components.getComponent<VLConfigService>(), components.getComponent<NSNotificationCenter>(),
        components.getComponent<NSBundle>());
}

}  // namespace

VLServiceComponents::VLServiceComponents(VLBootstrap& bootstrap, std::unique_ptr<VLIOSComponents> iosComponents)
    : bootstrap_(bootstrap), iosComponents_(std::move(iosComponents)) {}

VLServiceComponents::~VLServiceComponents() = default;

void VLServiceComponents::defaultVLServices(const std::shared_ptr<VLURLs>& urls) {
    defaultVLServiceDependencies(urls);
    add(createPayloadBuilder);
    add(vlURLSession);
    add(createEventService);
    add(createConfigService);
    add(createTagsService);
    add(createSessionService);
    add(createLifeCycleManager);
}

void VLServiceComponents::defaultVLServiceDependencies(const std::shared_ptr<VLURLs>& urls) {
    iosComponents_->defaultUIKitDependencies();
    add(createSettings);
    add([urls](VLBootstrap& components) {
        return std::make_shared<VLURLBuilder>(urls, components.getComponent<VLSettings>());
    });
}

template <class Make>
void VLServiceComponents::add(Make make) {
    using T = typename std::invoke_result_t<Make, VLBootstrap&>::element_type;
    bootstrap_.addComponent<T>([components = bootstrap_.weak_from_this(), make]() -> std::shared_ptr<T> {
        const auto registry = components.lock();
        return registry ? make(*registry) : nullptr;
    });
}

}  // namespace vorlane
