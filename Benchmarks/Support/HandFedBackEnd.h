#pragma once

#include <memory>
#include <vector>

#include "Platform/LocationBackEnd.h"

namespace vorlane::benchmarks {

/// A device with every permission, whose positions come from the benchmark. Main thread only.
class HandFedBackEnd : public LocationBackEnd {
public:
    void setListener(std::weak_ptr<Listener> listener) override { listener_ = std::move(listener); }
    void setNeeds(const Needs& /*needs*/) override {}
    bool locationServicesEnabled() const override { return true; }
    bool hasPositions() const override { return true; }
    bool hasAdvertisements() const override { return true; }
    CLAuthorizationStatus authorizationStatus() const override { return CLAuthorizationStatus::AuthorizedAlways; }
    void requestAuthorization(CLAuthorizationStatus /*wanted*/) override {}

    void receive(const CLLocation& position) const {
        if (const auto listener = listener_.lock()) listener->positionsArrived({position});
    }

private:
    std::weak_ptr<Listener> listener_;
};

}  // namespace vorlane::benchmarks
