#pragma once

#include <functional>
#include <memory>

#include "Platform/NSURL.h"

namespace vorlane {

class DispatchQueue;
class NSURLSession;
class VLImage;

/// Downloads card images: over https from anywhere, and from the service's own origin over whatever that speaks. Any
/// thread.
class VLCardImageLoader {
public:
    /// Null when there is no image to be had.
    using Handler = std::function<void(std::shared_ptr<const VLImage> image)>;

    /// Images are decoded, and handlers called, on `queue`.
    VLCardImageLoader(std::shared_ptr<NSURLSession> session, std::shared_ptr<DispatchQueue> queue);

    /// The handler runs once. What fails is logged. `service` is any URL of the service.
    void load(const NSURL& imageURL, const NSURL& service, Handler handler) const;

private:
    // Fixed at construction.
    const std::shared_ptr<NSURLSession> session_;
    const std::shared_ptr<DispatchQueue> queue_;
};

}  // namespace vorlane
