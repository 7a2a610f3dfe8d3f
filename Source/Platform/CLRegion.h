#pragma once

#include <memory>
#include <string>
#include <utility>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// A region that a location manager can monitor. The identifier distinguishes regions.
class VORLANE_EXPORT CLRegion {
public:
    explicit CLRegion(std::string identifier) : identifier_(std::move(identifier)) {}
    virtual ~CLRegion();

    const std::string& identifier() const { return identifier_; }

    /// The form used in log lines: the class and the distinguishing fields.
    virtual std::string description() const = 0;

    /// The form used in property lists and JSON: "type" ("circular" or "beacon"), "identifier", and the fields of that
    /// type. These are "latitude", "longitude" and "radius", or "uuid" and, if set, "major", "minor" and
    /// "notifyEntryStateOnDisplay".
    virtual Dictionary toDictionary() const = 0;
    /// Makes the region from such a dictionary. Returns null if a field is missing or of the wrong type, if the
    /// coordinate or the UUID is invalid, or if the radius is not positive.
    static std::shared_ptr<CLRegion> fromDictionary(const Dictionary& dictionary);

private:
    const std::string identifier_;
};

}  // namespace vorlane
