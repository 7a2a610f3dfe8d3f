#pragma once

#include <cstdint>
#include <string>

#include "Platform/NSError.h"
#include "Public/VLErrorDomains.h"
#include "Public/VLValue.h"

namespace vorlane {

/// Makes the errors that the library reports. Any thread.
class VLError {
public:
    /// `errorWithDomain:code:description:`
    static NSError errorWithDomain(const std::string& domain, std::int64_t code, const std::string& description);
    /// `errorWithDomain:code:description:userInfo:`
    static NSError errorWithDomain(const std::string& domain, std::int64_t code, const std::string& description,
                                   const Dictionary& userInfo);
    /// `initWithDomain:code:description:userInfo:` makes the error. The description replaces the one in `userInfo`.
    static NSError initWithDomain(const std::string& domain, std::int64_t code, const std::string& description,
                                  Dictionary userInfo);
};

}  // namespace vorlane
