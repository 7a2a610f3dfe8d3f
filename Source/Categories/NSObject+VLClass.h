#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// Returns the name of the value's class for log lines: "NSString", "NSNumber", "NSArray", "NSDictionary", "NSData" or
/// "NSNull".
std::string vl_className(const Value& value);

}  // namespace vorlane
