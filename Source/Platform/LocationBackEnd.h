#pragma once

#include <memory>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"
#include "Platform/CLLocationManagerDelegate.h"
#include "Public/VLExport.h"

namespace vorlane {

/// Delivers positions and beacon advertisements to a location manager. The manager computes from them when the device
/// enters or leaves a region. Any thread may call.
class VORLANE_EXPORT LocationBackEnd {
public:
    /// Receives what the back end delivers, on any thread.
    class VORLANE_EXPORT Listener {
    public:
        virtual ~Listener();
        /// Receives one update, the oldest fix first.
        virtual void positionsArrived(const std::vector<CLLocation>& positions) = 0;
        virtual void advertisementArrived(const CLBeacon& beacon) = 0;
        /// Called after the status has changed.
        virtual void authorizationStatusChanged() = 0;
    };

    /// What the manager currently needs. The back end may turn off everything else.
    struct Needs {
        bool positions = false;
        bool advertisements = false;
        /// Metres, or `kCLLocationAccuracyBest`.
        double desiredAccuracy = 0;
        /// Whether delivery continues while the application is in the background.
        bool inBackground = false;

        bool operator==(const Needs&) const = default;
    };

    virtual ~LocationBackEnd();

    virtual void setListener(std::weak_ptr<Listener> listener) = 0;
    virtual void setNeeds(const Needs& needs) = 0;

    virtual bool locationServicesEnabled() const = 0;
    /// Whether the device can determine its position.
    virtual bool hasPositions() const = 0;
    /// Whether the device can receive beacon advertisements.
    virtual bool hasAdvertisements() const = 0;

    virtual CLAuthorizationStatus authorizationStatus() const = 0;
    /// Asks the user for `AuthorizedAlways` or `AuthorizedWhenInUse`, unless the status is already determined. The
    /// listener is notified of the answer as a changed status.
    virtual void requestAuthorization(CLAuthorizationStatus wanted) = 0;
};

}  // namespace vorlane
