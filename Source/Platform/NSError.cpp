#include "Platform/NSError.h"

#include <fmt/format.h>

#include <utility>

namespace vorlane {

NSError::NSError(std::string domain, std::int64_t code, Dictionary userInfo)
    : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {}

std::string NSError::localizedDescription() const {
    const auto found = userInfo_.find(NSLocalizedDescriptionKey);
    if (found != userInfo_.end() && found->second.is_string()) return found->second.get<std::string>();
    return fmt::format("The operation couldn't be completed. ({} error {}.)", domain_, code_);
}

std::string NSError::description() const {
    return fmt::format("Error Domain={} Code={} \"{}\"", domain_, code_, localizedDescription());
}

}  // namespace vorlane
