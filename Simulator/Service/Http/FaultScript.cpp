#include "Simulator/Service/Http/FaultScript.h"

#include <algorithm>
#include <utility>

namespace vorlane::service {

Fault FaultScript::add(Fault fault) {
    const std::lock_guard lock(mutex_);
    fault.id = ++lastId_;
    faults_.push_back(fault);
    return fault;
}

std::optional<Fault> FaultScript::take(const std::string& endpoint) {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(faults_.begin(), faults_.end(), [&endpoint](const Fault& fault) {
        return fault.endpoint == "*" || fault.endpoint == endpoint;
    });
    if (found == faults_.end()) return std::nullopt;
    ++found->applied;
    const Fault taken = *found;
    if (found->count && --*found->count == 0) faults_.erase(found);
    return taken;
}

std::vector<Fault> FaultScript::faults() const {
    const std::lock_guard lock(mutex_);
    return faults_;
}

void FaultScript::removeAll() {
    const std::lock_guard lock(mutex_);
    faults_.clear();
}

std::size_t FaultScript::removeWithId(std::int64_t id) {
    const std::lock_guard lock(mutex_);
    return std::erase_if(faults_, [id](const Fault& fault) { return fault.id == id; });
}

std::size_t FaultScript::removeWithEndpoint(const std::string& endpoint) {
    const std::lock_guard lock(mutex_);
    return std::erase_if(faults_, [&endpoint](const Fault& fault) { return fault.endpoint == endpoint; });
}

}  // namespace vorlane::service
