#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace vorlane {

class VLServiceComponents;
class VLURLs;

/// The registry that makes and holds every service: a factory per type, and at most one shared instance, made on first
/// request.
///
/// A type is known by its own name, a protocol (an abstract class) as much as a class, so the operations that tell the
/// two apart elsewhere are one here. Main thread only, while the facade is made.
class VLBootstrap : public std::enable_shared_from_this<VLBootstrap> {
public:
    template <class T>
    using Factory = std::function<std::shared_ptr<T>()>;

    /// `initWithURLs:` registers the factories of all services, for this endpoint set. Makes no instance yet.
    static std::shared_ptr<VLBootstrap> bootstrapWithURLs(const std::shared_ptr<VLURLs>& urls);
    ~VLBootstrap();

    /// `addComponent:forClassType:`, `addComponent:forProtocol:` store a factory, in place of an earlier one; an
    /// instance that was made already stays.
    template <class T>
    void addComponent(Factory<T> factory) {
        addComponent([factory = std::move(factory)]() -> std::shared_ptr<void> { return factory(); }, typeName<T>());
    }
    /// `addComponent:typeName:`
    void addComponent(Factory<void> factory, const std::string& name) { createBlocks_[name] = std::move(factory); }

    /// `addComponentInstance:forClassType:`, `overrideComponent:forClassType:` store a ready instance, nothing for
    /// null. Before the first request it replaces what the factory would have made.
    template <class T>
    void addComponentInstance(std::shared_ptr<T> instance) {
        if (instance) components_[typeName<T>()] = std::move(instance);
    }
    /// `addComponent:` stores a ready instance under the name of its own class, nothing for null.
    template <class T>
    void addComponent(const std::shared_ptr<T>& instance) {
        if (!instance) return;
        if constexpr (std::is_polymorphic_v<T>) {
            // The whole object, which a request for its own class expects.
            const std::shared_ptr<void> whole(instance, dynamic_cast<void*>(instance.get()));
            components_[typeName(typeid(*instance))] = whole;
        } else {
            components_[typeName<T>()] = instance;
        }
    }
    /// `overrideComponentWithBlock:forClassType:`, `…:forProtocol:` call the factory at once and store its result.
    template <class T>
    void overrideComponentWithBlock(const Factory<T>& factory) {
        addComponentInstance<T>(factory());
    }

    /// `getComponent:`, `getComponentForProtocol:` give the shared instance, made on first request. What a factory
    /// gives as null is not kept, so it is asked again. Throws for a type that was never registered.
    template <class T>
    std::shared_ptr<T> getComponent() {
        return std::static_pointer_cast<T>(getComponentForString(typeName<T>()));
    }
    /// The same by type; null for null.
    std::shared_ptr<void> getComponent(const std::type_info* type);
    std::shared_ptr<void> getComponentForString(const std::string& name);

    /// `createComponent:`, `createComponentForProtocol:` call the factory and keep nothing.
    template <class T>
    std::shared_ptr<T> createComponent() {
        return std::static_pointer_cast<T>(createComponentForString(typeName<T>()));
    }
    std::shared_ptr<void> createComponentForString(const std::string& name);

    /// The type's own name, without its namespace.
    template <class T>
    static std::string typeName() {
        return typeName(typeid(T));
    }
    static std::string typeName(const std::type_info& type);

private:
    VLBootstrap();

    std::map<std::string, std::shared_ptr<void>> components_;
    std::map<std::string, Factory<void>> createBlocks_;
    std::unique_ptr<VLServiceComponents> serviceComponents_;
};

}  // namespace vorlane
