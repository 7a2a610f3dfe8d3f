#pragma once

#include <memory>
#include <vector>

#include "Platform/LocationBackEnd.h"

namespace vorlane {

/// A back end that delivers what a test passes to its listener.
class HandDrivenBackEnd : public LocationBackEnd {
public:
    void setListener(std::weak_ptr<Listener> newListener) override { listener = std::move(newListener); }
    void setNeeds(const Needs& newNeeds) override { needs.push_back(newNeeds); }
    bool locationServicesEnabled() const override { return true; }
    bool hasPositions() const override { return canLocate; }
    bool hasAdvertisements() const override { return canHear; }
    CLAuthorizationStatus authorizationStatus() const override { return status; }
    void requestAuthorization(CLAuthorizationStatus wanted) override {
        status = wanted;
        listener.lock()->authorizationStatusChanged();
    }

    std::weak_ptr<Listener> listener;
    std::vector<Needs> needs;
    bool canLocate = true;
    bool canHear = true;
    CLAuthorizationStatus status = CLAuthorizationStatus::NotDetermined;
};

}  // namespace vorlane
