#pragma once

#include <memory>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"
#include "Platform/CLLocationManagerDelegate.h"
#include "Public/VLExport.h"

namespace vorlane {

/// Where a platform's location manager gets positions and the advertisements of beacons from. It computes nothing: that
/// the device enters or leaves a region is the manager's to find out. Any thread may call.
class VORLANE_EXPORT LocationBackEnd {
public:
    /// Told what the back end receives, on any thread.
    class VORLANE_EXPORT Listener {
    public:
        virtual ~Listener();
        /// One update, oldest fix first.
        virtual void positionsArrived(const std::vector<CLLocation>& positions) = 0;
        virtual void advertisementArrived(const CLBeacon& beacon) = 0;
        /// The status is another one now.
        virtual void authorizationStatusChanged() = 0;
    };

    /// What the manager needs at the moment; the rest may be switched off.
    struct Needs {
        bool positions = false;
        bool advertisements = false;
        /// Metres; `kCLLocationAccuracyBest` for the best there is.
        double desiredAccuracy = 0;
        /// Also while the application is in the background.
        bool inBackground = false;

        bool operator==(const Needs&) const = default;
    };

    virtual ~LocationBackEnd();

    virtual void setListener(std::weak_ptr<Listener> listener) = 0;
    virtual void setNeeds(const Needs& needs) = 0;

    virtual bool locationServicesEnabled() const = 0;
    /// Whether the device can tell its position; whether it can hear beacons.
    virtual bool hasPositions() const = 0;
    virtual bool hasAdvertisements() const = 0;

    virtual CLAuthorizationStatus authorizationStatus() const = 0;
    /// Asks the user for this status (always, or when in use), unless the answer is known. An answer is told as a
    /// changed status.
    virtual void requestAuthorization(CLAuthorizationStatus wanted) = 0;
};

}  // namespace vorlane
