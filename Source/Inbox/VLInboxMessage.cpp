#include "Public/VLInboxMessage.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "Core/Base/VLCompletion.h"
#include "Inbox/VLInboxService.h"
#include "Platform/NSURL.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

/// Matches "^#[0-F]{6}$" case-insensitively. Intended: the range includes the characters between the digits and the
/// letters.
bool isColor(std::string_view text) {
    constexpr std::size_t kDigits = 6;
    const auto isDigit = [](char digit) { return (digit >= '0' && digit <= 'F') || (digit >= 'a' && digit <= 'f'); };
    return text.size() == kDigits + 1 && text.front() == '#' && std::ranges::all_of(text.substr(1), isDigit);
}

VLInboxMessage::Content withCheckedColors(VLInboxMessage::Content content) {
    const VLInboxMessage::Content defaults;
    if (!isColor(content.cardBackgroundColor)) content.cardBackgroundColor = defaults.cardBackgroundColor;
    if (!isColor(content.cardForegroundColor)) content.cardForegroundColor = defaults.cardForegroundColor;
    return content;
}

}  // namespace

/// A load under way; ends early if the service drops its work. Guarded by the message's mutex_.
struct VLInboxMessage::ImageLoad {
    std::vector<ImageHandler> handlers;
};

VLInboxMessage::VLInboxMessage() : content_() {}

VLInboxMessage::VLInboxMessage(Content content, std::weak_ptr<VLInboxService> service)
    : content_(withCheckedColors(std::move(content))), service_(std::move(service)) {}

VLInboxMessage::~VLInboxMessage() = default;

std::shared_ptr<const VLImage> VLInboxMessage::loadedImage() const {
    const std::lock_guard lock(mutex_);
    return loadedImage_;
}

void VLInboxMessage::loadImageWithCompletion(ImageHandler completionHandler) {
    const auto load = startLoad(std::move(completionHandler));
    if (!load) return;
    const auto service = service_.lock();
    if (!service) return downloadImage(load);
    service->loadImageForNotificationId(messageId(), service->trackingId(),
                                        [self = shared_from_this(), load](const std::shared_ptr<const VLImage>& image) {
                                            image ? self->endLoad(*load, image) : self->downloadImage(load);
                                        });
}

void VLInboxMessage::loadExternalImage(ImageHandler completionHandler) {
    if (const auto load = startLoad(std::move(completionHandler))) downloadImage(load);
}

/// Returns null if the image is loaded, or if a load is under way, which then serves the handler, too.
std::shared_ptr<VLInboxMessage::ImageLoad> VLInboxMessage::startLoad(ImageHandler completionHandler) {
    std::unique_lock lock(mutex_);
    if (auto image = loadedImage_) {
        lock.unlock();
        completeOnMainQueue(completionHandler, std::move(image));
        return nullptr;
    }
    const auto current = imageLoad_.lock();
    const auto load = current ? current : std::make_shared<ImageLoad>();
    load->handlers.push_back(std::move(completionHandler));
    imageLoad_ = load;
    return current ? nullptr : load;
}

void VLInboxMessage::downloadImage(const std::shared_ptr<ImageLoad>& load) {
    const auto service = service_.lock();
    const auto imageURL = cardImage() ? NSURL::URLWithString(*cardImage()) : std::nullopt;
    if (!imageURL) logMessage(VLLogLevel::Debug, "Skipping image download as card has no image");
    if (!imageURL || !service) return endLoad(*load, nullptr);
    service->downloadImage(*imageURL, messageId(),
                           [self = shared_from_this(), load](const std::shared_ptr<const VLImage>& image) {
                               const auto owner = self->service_.lock();
                               if (image && owner) {
                                   owner->saveImage(image->data(), self->messageId(), owner->trackingId(), nullptr);
                               }
                               self->endLoad(*load, image);
                           });
}

void VLInboxMessage::endLoad(ImageLoad& load, const std::shared_ptr<const VLImage>& image) {
    std::vector<ImageHandler> handlers;
    {
        const std::lock_guard lock(mutex_);
        loadedImage_ = image;
        imageLoad_.reset();
        handlers.swap(load.handlers);
    }
    for (const auto& handler : handlers) completeOnMainQueue(handler, image);
}

}  // namespace vorlane
