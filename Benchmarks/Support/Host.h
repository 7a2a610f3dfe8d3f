#pragma once

#include <memory>
#include <string>
#include <utility>

#include "Benchmarks/Support/Answers.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/LocationBackEnd.h"
#include "Platform/NSURLSession.h"

namespace vorlane::benchmarks {

/// A Linux platform whose network answers every request immediately, on the caller's thread: with `answers`, or else
/// with status 204.
class OfflinePlatform : public LinuxPlatform {
public:
    explicit OfflinePlatform(Options options, Answers answers = {})
        : LinuxPlatform(std::move(options)), answers_(std::move(answers)) {}
    std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& configuration) override;

private:
    const Answers answers_;
};

/// Installs a Linux platform with its files in `folder`, and sets every endpoint to `origin`.
std::shared_ptr<LinuxPlatform> installLinuxPlatform(const std::string& folder, const std::string& origin);
/// Installs an OfflinePlatform without answers.
std::shared_ptr<LinuxPlatform> installOfflinePlatform(const std::string& folder);
/// Installs an OfflinePlatform for an application that uses geofences and beacons, on a device with `backEnd`.
std::shared_ptr<LinuxPlatform> installOfflinePlatform(const std::string& folder, Answers answers,
                                                      std::shared_ptr<LocationBackEnd> backEnd);

/// Starts the library with the default options, which log at INFO.
void startLibrary();

}  // namespace vorlane::benchmarks
