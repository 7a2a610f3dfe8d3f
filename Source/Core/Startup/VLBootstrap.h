#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace vorlane {

class VLServiceComponents;
class VLURLs;

/// The registry that makes and holds every service: one factory per type, and at most one shared instance, made on
/// first request.
///
/// A type is registered under its own name. A protocol is an abstract class, so `getComponent:` and
/// `getComponentForProtocol:`, and the other pairs of that kind, are one operation each. Main thread only, while the
/// facade is made.
class VLBootstrap : public std::enable_shared_from_this<VLBootstrap> {
public:
    template <class T>
    using Factory = std::function<std::shared_ptr<T>()>;

    /// `initWithURLs:` registers the factories of all services for this endpoint set. Makes no instance.
    static std::shared_ptr<VLBootstrap> bootstrapWithURLs(const std::shared_ptr<VLURLs>& urls);
    ~VLBootstrap();

    /// `addComponent:forClassType:` and `addComponent:forProtocol:` store a factory and replace an earlier one. An
    /// existing instance is kept.
    template <class T>
    void addComponent(Factory<T> factory) {
        addComponent([factory = std::move(factory)]() -> std::shared_ptr<void> { return factory(); }, typeName<T>());
    }
    /// `addComponent:typeName:`
    void addComponent(Factory<void> factory, const std::string& name);

    /// `addComponentInstance:forClassType:` and `overrideComponent:forClassType:` store a ready instance, which is
    /// returned from then on. Null is ignored.
    template <class T>
    void addComponentInstance(std::shared_ptr<T> instance) {
        if (instance) components_[typeName<T>()] = std::move(instance);
    }
    /// `addComponent:` stores a ready instance under the name of its most derived class. Null is ignored.
    template <class T>
    void addComponent(const std::shared_ptr<T>& instance) {
        if (!instance) return;
        if constexpr (std::is_polymorphic_v<T>) {
            // A request for the most derived class expects a pointer to the whole object.
            const std::shared_ptr<void> whole(instance, dynamic_cast<void*>(instance.get()));
            components_[typeName(typeid(*instance))] = whole;
        } else {
            components_[typeName<T>()] = instance;
        }
    }
    /// `overrideComponentWithBlock:forClassType:` and `…:forProtocol:` call the factory at once and store its result.
    template <class T>
    void overrideComponentWithBlock(const Factory<T>& factory) {
        addComponentInstance<T>(factory());
    }

    /// `getComponent:` and `getComponentForProtocol:` return the shared instance, made on first request. A null result
    /// of a factory is not stored: the next request calls the factory again. Throws an `NSException` named
    /// "Unregistered Component" for a type without a factory.
    template <class T>
    std::shared_ptr<T> getComponent() {
        return std::static_pointer_cast<T>(getComponentForString(typeName<T>()));
    }
    /// Returns null for a null type.
    std::shared_ptr<void> getComponent(const std::type_info* type);
    std::shared_ptr<void> getComponentForString(const std::string& name);

    /// `createComponent:` and `createComponentForProtocol:` return a new instance and do not store it.
    template <class T>
    std::shared_ptr<T> createComponent() {
        return std::static_pointer_cast<T>(createComponentForString(typeName<T>()));
    }
    std::shared_ptr<void> createComponentForString(const std::string& name);

    /// The names that have a factory, in the order of their first registration.
    const std::vector<std::string>& registeredNames() const { return registeredNames_; }

    /// The type's name without its namespace.
    template <class T>
    static std::string typeName() {
        return typeName(typeid(T));
    }
    static std::string typeName(const std::type_info& type);

private:
    VLBootstrap();

    std::map<std::string, std::shared_ptr<void>> components_;
    std::map<std::string, Factory<void>> createBlocks_;
    std::vector<std::string> registeredNames_;
    std::unique_ptr<VLServiceComponents> serviceComponents_;
};

}  // namespace vorlane
