#pragma once

#include <map>
#include <memory>
#include <string>

#include "Platform/NSObject.h"
#include "Public/VLValue.h"
#include "Simulator/Phone/PhoneOperations.h"

namespace vorlane::phone {

/// A new view controller of the kind that the text names, or an object that is none; null for null. An interstitial
/// tells when it has come to the screen. Throws BadLine.
std::shared_ptr<NSObject> viewControllerFrom(Phone& phone, const Value& value, const std::string& name);

/// The table with the operations of `Vorlane` that concern interstitials and permissions.
std::map<std::string, Operation> withScreenOperations(std::map<std::string, Operation> table);

/// What a query sees: the kinds of the controllers in the key window, from the root up.
Value presentedViewControllers(Phone& phone);

}  // namespace vorlane::phone
