#pragma once

#include <string>
#include <typeinfo>

#include "Public/VLExport.h"

namespace vorlane {

/// The base class of objects whose class an operation examines at run time, such as view controllers.
class VORLANE_EXPORT NSObject {
public:
    NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject();

    /// Returns the name of the object's dynamic class, without its namespace.
    std::string className() const;
};

/// `NSStringFromClass` returns the name of the class, without its namespace.
VORLANE_EXPORT std::string NSStringFromClass(const std::type_info& type);

}  // namespace vorlane
