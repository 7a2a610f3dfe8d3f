#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Simulator/Service/Http/Fault.h"

namespace vorlane::service {

/// The scripted faults, oldest first. Any thread.
class FaultScript {
public:
    /// Returns the fault with the id that it was assigned.
    Fault add(Fault fault);
    /// Returns the first fault that applies to a request of this endpoint, and counts it.
    std::optional<Fault> take(const std::string& endpoint);

    std::vector<Fault> faults() const;
    void removeAll();
    /// Returns the number of removed faults.
    std::size_t removeWithId(std::int64_t id);
    std::size_t removeWithEndpoint(const std::string& endpoint);

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<Fault> faults_;
    std::int64_t lastId_ = 0;
};

}  // namespace vorlane::service
