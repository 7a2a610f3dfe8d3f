#include "Simulator/Phone/PhoneScreen.h"

#include <vector>

#include "Platform/UIAlertController.h"
#include "Platform/UINavigationController.h"
#include "Platform/UIWindow.h"
#include "Public/Vorlane.h"
#include "Simulator/Phone/Phone.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneValues.h"
#include "Simulator/Platform/SimulatedInterstitialViewController.h"

namespace vorlane::phone {

namespace {

using Interstitial = SimulatedInterstitialViewController;
using Controllers = std::vector<std::shared_ptr<UIViewController>>;

void tellOf(Phone& phone, const Interstitial& interstitial) {
    phone.output().event(
        "interstitial", {{"htmlContent", interstitial.htmlContent()},
                         {"phash", valueOf(interstitial.phash())},
                         {"metadata", interstitial.metadata() ? Value(*interstitial.metadata()) : Value()},
                         {"animated", interstitial.wasAnimated()},
                         {"modalTransitionStyle", static_cast<std::int64_t>(interstitial.modalTransitionStyle())},
                         {"modalPresentationStyle", static_cast<std::int64_t>(interstitial.modalPresentationStyle())}});
}

std::shared_ptr<NSObject> makeInterstitial(Phone& phone, Interstitial::Metadata metadata) {
    auto interstitial = std::make_shared<Interstitial>(metadata);
    interstitial->setAppearanceObserver([&phone](const Interstitial& shown) { tellOf(phone, shown); });
    return interstitial;
}

std::shared_ptr<UIViewController> screenFrom(const Value& kind) {
    const auto word = stringFrom(kind, "a view controller of the chain");
    if (word == "plain") return std::make_shared<UIViewController>();
    if (word == "alert") return std::make_shared<UIAlertController>();
    if (word != "navigation") throw BadLine("chain has plain, navigation and alert, not " + word);
    auto navigation = std::make_shared<UINavigationController>();
    navigation->pushViewController(std::make_shared<UIViewController>(), false);
    return navigation;
}

const char* kindOf(const std::shared_ptr<UIViewController>& controller) {
    if (const auto interstitial = std::dynamic_pointer_cast<Interstitial>(controller)) {
        return interstitial->takesMetadata() ? "interstitialWithMetadata" : "interstitial";
    }
    if (std::dynamic_pointer_cast<UIAlertController>(controller)) return "alert";
    if (std::dynamic_pointer_cast<UINavigationController>(controller)) return "navigation";
    return "plain";
}

/// The controllers on screen, from the root up.
Controllers controllersOnScreen(Phone& phone) {
    Controllers controllers;
    const auto window = phone.device().application()->keyWindow();
    for (auto next = window ? window->rootViewController() : nullptr; next; next = next->presentedViewController()) {
        controllers.push_back(next);
    }
    return controllers;
}

Value viewControllers(Phone& phone, const Dictionary& line) {
    const auto& chain = requiredField(line, "chain");
    if (!chain.is_array()) throw BadLine("chain must be an array");
    Controllers controllers;
    for (const auto& kind : chain) controllers.push_back(screenFrom(kind));
    for (std::size_t i = 1; i < controllers.size(); ++i) {
        controllers[i - 1]->presentViewController(controllers[i], false, nullptr);
    }
    phone.device().application()->setKeyWindow(controllers.empty() ? nullptr
                                                                   : std::make_shared<UIWindow>(controllers.front()));
    return nullptr;
}

Value dismissInterstitial(Phone& phone, const Dictionary& /*line*/) {
    for (const auto& controller : controllersOnScreen(phone)) {
        const auto interstitial = std::dynamic_pointer_cast<Interstitial>(controller);
        if (!interstitial) continue;
        interstitial->close();
        return nullptr;
    }
    throw BadLine("no interstitial is on screen");
}

VLPermissions permissionFrom(const OperationCall& call) {
    return static_cast<VLPermissions>(static_cast<std::uint64_t>(call.integer(0)));
}

Value present(const OperationCall& call) {
    const auto placement = static_cast<VLInterstitialPlacement>(static_cast<std::uint64_t>(call.integer(0)));
    const auto viewController = viewControllerFrom(call.phone(), call.argument(1), "argument 2");
    const bool animated = booleanFrom(call.argument(2), "argument 3");
    Vorlane::presentInterstitialWithPlacement(placement, viewController, animated, call.outcomeHandler());
    return nullptr;
}

/// A string that is not a URL becomes `nullopt`, as in a host.
Value openDeepLink(const OperationCall& call) {
    const auto text = call.optionalString(0);
    return Vorlane::openVorlaneDeepLink(text ? NSURL::URLWithString(*text) : std::nullopt);
}

Value ask(const OperationCall& call) {
    Vorlane::askForPermission(permissionFrom(call));
    return nullptr;
}

Value askWithInterstitial(const OperationCall& call) {
    const auto permission = permissionFrom(call);
    Vorlane::askForPermission(permission, viewControllerFrom(call.phone(), call.argument(1), "argument 2"));
    return nullptr;
}

Value locationAuthorisationStatus(const OperationCall& /*call*/) { return Vorlane::locationAuthorisationStatus(); }

}  // namespace

std::shared_ptr<NSObject> viewControllerFrom(Phone& phone, const Value& value, const std::string& name) {
    const auto word = optionalStringFrom(value, name);
    if (!word) return nullptr;
    if (word == "interstitial") return makeInterstitial(phone, Interstitial::Metadata::Ignored);
    if (word == "interstitialWithMetadata") return makeInterstitial(phone, Interstitial::Metadata::Taken);
    if (word == "plainViewController") return std::make_shared<UIViewController>();
    if (word == "notAViewController") return std::make_shared<NSObject>();
    throw BadLine(name +
                  " must be interstitial, interstitialWithMetadata, plainViewController, notAViewController or null");
}

std::map<std::string, Operation> withScreenOperations(std::map<std::string, Operation> table) {
    table.merge(std::map<std::string, Operation>{
        {"presentInterstitialWithPlacement:viewController:animated:completionHandler:", present},
        {"openVorlaneDeepLink:", openDeepLink},
        {"askForPermission:", ask},
        {"askForPermission:interstitialViewController:", askWithInterstitial},
        {"locationAuthorisationStatus", locationAuthorisationStatus},
    });
    return table;
}

Value presentedViewControllers(Phone& phone) {
    Array kinds;
    for (const auto& controller : controllersOnScreen(phone)) kinds.emplace_back(kindOf(controller));
    return kinds;
}

Phone::Commands screenCommands() {
    return {{"viewControllers", viewControllers}, {"dismissInterstitial", dismissInterstitial}};
}

}  // namespace vorlane::phone
