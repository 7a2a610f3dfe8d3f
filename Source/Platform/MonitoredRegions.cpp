#include "Platform/MonitoredRegions.h"

#include <utility>

#include "Platform/Internal/PropertyListFile.h"

namespace vorlane {

namespace {

constexpr const char* kRegionsKey = "regions";
constexpr const char* kStateKey = "state";

CLRegionState stateIn(const Dictionary& fields) {
    const auto found = fields.find(kStateKey);
    if (found == fields.end()) return CLRegionState::Unknown;
    if (found->second == Value("inside")) return CLRegionState::Inside;
    return found->second == Value("outside") ? CLRegionState::Outside : CLRegionState::Unknown;
}

}  // namespace

MonitoredRegions::MonitoredRegions(std::string path) : file_(std::make_unique<PropertyListFile>(std::move(path))) {
    take(file_->read().contents);
}

MonitoredRegions::~MonitoredRegions() = default;

/// Adds the regions in the file that have none of the known identifiers. With the lock held.
void MonitoredRegions::take(const Value& root) {
    const auto list = root.find(kRegionsKey);
    if (list == root.end() || !list->is_array()) return;
    for (const auto& entry : *list) {
        const auto* fields = entry.get_ptr<const Dictionary*>();
        if (auto region = fields ? CLRegion::fromDictionary(*fields) : nullptr) {
            const auto identifier = region->identifier();
            regions_.try_emplace(identifier, Entry{std::move(region), stateIn(*fields)});
        }
    }
}

void MonitoredRegions::add(std::shared_ptr<CLRegion> region, CLRegionState state) {
    {
        const std::lock_guard lock(mutex_);
        const auto identifier = region->identifier();
        regions_[identifier] = {std::move(region), state};
    }
    write();
}

bool MonitoredRegions::remove(const std::string& identifier) {
    {
        const std::lock_guard lock(mutex_);
        if (regions_.erase(identifier) == 0) return false;
    }
    write();
    return true;
}

std::shared_ptr<CLRegion> MonitoredRegions::find(const std::string& identifier) const {
    const std::lock_guard lock(mutex_);
    const auto found = regions_.find(identifier);
    return found == regions_.end() ? nullptr : found->second.region;
}

CLRegionState MonitoredRegions::stateOf(const std::string& identifier) const {
    const std::lock_guard lock(mutex_);
    const auto found = regions_.find(identifier);
    return found == regions_.end() ? CLRegionState::Unknown : found->second.state;
}

void MonitoredRegions::setState(const std::string& identifier, CLRegionState state) {
    {
        const std::lock_guard lock(mutex_);
        const auto found = regions_.find(identifier);
        if (found == regions_.end() || std::exchange(found->second.state, state) == state) return;
    }
    write();
}

std::vector<std::shared_ptr<CLRegion>> MonitoredRegions::all() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<CLRegion>> list;
    for (const auto& [identifier, entry] : regions_) list.push_back(entry.region);
    return list;
}

/// Without the lock held. At the end of a step it runs outside the locks of the owner.
void MonitoredRegions::write() {
    if (PropertyListFile::Step::postpone(*file_, [this] { write(); })) return;
    const std::lock_guard lock(mutex_);
    if (const auto stored = file_->readAgain()) take(*stored);
    Array list;
    for (const auto& [identifier, entry] : regions_) {
        auto fields = entry.region->toDictionary();
        if (entry.state == CLRegionState::Inside) fields[kStateKey] = "inside";
        if (entry.state == CLRegionState::Outside) fields[kStateKey] = "outside";
        list.emplace_back(std::move(fields));
    }
    file_->write(Dictionary{{kRegionsKey, std::move(list)}});
}

}  // namespace vorlane
