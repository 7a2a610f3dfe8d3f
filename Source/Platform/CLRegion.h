#pragma once

#include <string>
#include <utility>

#include "Public/VLExport.h"

namespace vorlane {

/// A region that the location manager can watch, told apart by its identifier.
class VORLANE_EXPORT CLRegion {
public:
    explicit CLRegion(std::string identifier) : identifier_(std::move(identifier)) {}
    virtual ~CLRegion();

    const std::string& identifier() const { return identifier_; }

    /// As log lines show it: the class and the fields that tell it apart.
    virtual std::string description() const = 0;

private:
    const std::string identifier_;
};

}  // namespace vorlane
