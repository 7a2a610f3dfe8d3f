#pragma once

#include <string>
#include <typeinfo>

#include "Public/VLExport.h"

namespace vorlane {

/// The root of what an application hands over as "some object": a view controller, for one. An operation that takes an
/// NSObject finds out by itself what the object is.
class VORLANE_EXPORT NSObject {
public:
    NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject();

    /// The name of the object's own class, without its namespace.
    std::string className() const;
};

/// `NSStringFromClass`: the class's own name, without its namespace.
VORLANE_EXPORT std::string NSStringFromClass(const std::type_info& type);

}  // namespace vorlane
