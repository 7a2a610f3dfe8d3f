#include "Platform/NSError.h"

#include <fmt/format.h>

#include <utility>

#include "Public/VLValue.h"

namespace vorlane {

namespace {

/// Never destroyed, so that a host's static object may still use it.
const Dictionary& emptyDictionary() {
    static const auto* const empty = new Dictionary;
    return *empty;
}

}  // namespace

NSError::NSError(std::string domain, std::int64_t code) : domain_(std::move(domain)), code_(code) {}

NSError::NSError(std::string domain, std::int64_t code, Dictionary userInfo) : NSError(std::move(domain), code) {
    if (!userInfo.empty()) userInfo_ = std::make_shared<const Dictionary>(std::move(userInfo));
}

const Dictionary& NSError::userInfo() const { return userInfo_ ? *userInfo_ : emptyDictionary(); }

bool NSError::operator==(const NSError& other) const {
    return domain_ == other.domain_ && code_ == other.code_ && userInfo() == other.userInfo();
}

std::string NSError::localizedDescription() const {
    const auto found = userInfo().find(NSLocalizedDescriptionKey);
    if (found != userInfo().end() && found->second.is_string()) return found->second.get<std::string>();
    return fmt::format("The operation couldn't be completed. ({} error {}.)", domain_, code_);
}

std::string NSError::description() const {
    return fmt::format("Error Domain={} Code={} \"{}\"", domain_, code_, localizedDescription());
}

}  // namespace vorlane
