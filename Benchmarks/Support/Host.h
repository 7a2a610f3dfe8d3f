#pragma once

#include <memory>
#include <string>

#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSURLSession.h"

namespace vorlane::benchmarks {

/// A Linux platform whose network answers every request at once, on the caller's thread, with nothing: what remains is
/// the library.
class OfflinePlatform : public LinuxPlatform {
public:
    using LinuxPlatform::LinuxPlatform;
    std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& configuration) override;
};

/// Installs a Linux platform with its files in `folder`, and sets every endpoint to `origin`.
std::shared_ptr<LinuxPlatform> installLinuxPlatform(const std::string& folder, const std::string& origin);
/// The same without a network.
std::shared_ptr<LinuxPlatform> installOfflinePlatform(const std::string& folder);

/// Starts the library as an application does that logs at INFO.
void startLibrary();

}  // namespace vorlane::benchmarks
