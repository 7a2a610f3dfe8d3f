#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "Platform/NSURL.h"

namespace vorlane {

class DispatchQueue;
class NSURLSession;
class VLImage;

/// Downloads card images: over https from any host, and from the service's own origin over its own scheme. Any thread.
class VLCardImageLoader {
public:
    /// Receives null if the image could not be loaded.
    using Handler = std::function<void(std::shared_ptr<const VLImage> image)>;

    /// Images are checked on `queue`, which also runs the handlers.
    VLCardImageLoader(std::shared_ptr<NSURLSession> session, std::shared_ptr<DispatchQueue> queue);

    /// The handler runs once. Failures are logged. `service` is any URL of the service; without one only https is
    /// allowed.
    void load(const NSURL& imageURL, const std::optional<NSURL>& service, Handler handler) const;

private:
    // Fixed at construction.
    const std::shared_ptr<NSURLSession> session_;
    const std::shared_ptr<DispatchQueue> queue_;
};

}  // namespace vorlane
