#pragma once

#include <memory>
#include <string>
#include <utility>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// A region that the location manager can watch, told apart by its identifier.
class VORLANE_EXPORT CLRegion {
public:
    explicit CLRegion(std::string identifier) : identifier_(std::move(identifier)) {}
    virtual ~CLRegion();

    const std::string& identifier() const { return identifier_; }

    /// As log lines show it: the class and the fields that tell it apart.
    virtual std::string description() const = 0;

    /// As a property list or a line of JSON holds it: "type" ("circular" or "beacon"), "identifier", and the fields of
    /// that type under their names ("latitude", "longitude", "radius"; "uuid", and where given "major", "minor" and a
    /// true "notifyEntryStateOnDisplay").
    virtual Dictionary toDictionary() const = 0;
    /// The region of such a dictionary. Null when a field is missing or of another kind, when the centre is not on the
    /// globe, the radius not positive, or the UUID none.
    static std::shared_ptr<CLRegion> fromDictionary(const Dictionary& dictionary);

private:
    const std::string identifier_;
};

}  // namespace vorlane
