#include "Core/Base/VLError.h"

#include <utility>

namespace vorlane {

NSError VLError::errorWithDomain(const std::string& domain, std::int64_t code, const std::string& description) {
    return errorWithDomain(domain, code, description, {});
}

NSError VLError::errorWithDomain(const std::string& domain, std::int64_t code, const std::string& description,
                                 const Dictionary& userInfo) {
    return initWithDomain(domain, code, description, userInfo);
}

NSError VLError::initWithDomain(const std::string& domain, std::int64_t code, const std::string& description,
                                Dictionary userInfo) {
    userInfo[NSLocalizedDescriptionKey] = description;
    return NSError(domain, code, std::move(userInfo));
}

}  // namespace vorlane
