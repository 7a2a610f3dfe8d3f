#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// The name of the value's class, as log lines show it: "NSString", "NSNumber", "NSArray", "NSDictionary", "NSData" or
/// "NSNull".
std::string vl_className(const Value& value);

}  // namespace vorlane
