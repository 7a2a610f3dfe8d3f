#pragma once

#include <map>
#include <memory>
#include <string>

#include "Platform/NSObject.h"
#include "Public/VLValue.h"
#include "Simulator/Phone/PhoneOperations.h"

namespace vorlane::phone {

/// Returns a new view controller of the named kind, or an object that is not a view controller; null for null. An
/// interstitial writes an event when it appears. Throws BadLine.
std::shared_ptr<NSObject> viewControllerFrom(Phone& phone, const Value& value, const std::string& name);

/// Returns the table with the operations of `Vorlane` for interstitials and permissions added.
std::map<std::string, Operation> withScreenOperations(std::map<std::string, Operation> table);

/// The kinds of the controllers in the key window, from the root up.
Value presentedViewControllers(Phone& phone);

}  // namespace vorlane::phone
