#pragma once

#include <exception>
#include <string>

#include "Public/VLExport.h"

namespace vorlane {

/// A programming error of the host application, identified by its name. The library never catches it.
class VORLANE_EXPORT NSException : public std::exception {
public:
    NSException(std::string name, std::string reason);
    ~NSException() override;

    const std::string& name() const { return name_; }
    const std::string& reason() const { return reason_; }

    /// Returns "name: reason".
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::string name_;
    std::string reason_;
    std::string what_;
};

}  // namespace vorlane
