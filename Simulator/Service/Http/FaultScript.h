#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Simulator/Service/Http/Fault.h"

namespace vorlane::service {

/// The faults that are to happen, in the order in which they were scripted. Any thread.
class FaultScript {
public:
    /// Gives the fault its id and returns it so.
    Fault add(Fault fault);
    /// The fault that happens to a request of this endpoint now: the first that is left. Counts it.
    std::optional<Fault> take(const std::string& endpoint);

    std::vector<Fault> faults() const;
    void removeAll();
    /// How many were removed.
    std::size_t removeWithId(std::int64_t id);
    std::size_t removeWithEndpoint(const std::string& endpoint);

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<Fault> faults_;
    std::int64_t lastId_ = 0;
};

}  // namespace vorlane::service
