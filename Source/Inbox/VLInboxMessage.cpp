#include "Public/VLInboxMessage.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "Core/Base/VLCompletion.h"
#include "Inbox/VLInboxService.h"
#include "Platform/NSURL.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

/// The expression "^#[0-F]{6}$" without regard to case. Its range runs through the bytes between the digits and the
/// letters, too; meant so.
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

VLInboxMessage::VLInboxMessage() : content_() {}

VLInboxMessage::VLInboxMessage(Content content, std::weak_ptr<VLInboxService> service)
    : content_(withCheckedColors(std::move(content))), service_(std::move(service)) {}

VLInboxMessage::~VLInboxMessage() = default;

std::shared_ptr<const VLImage> VLInboxMessage::loadedImage() const {
    const std::lock_guard lock(mutex_);
    return loadedImage_;
}

void VLInboxMessage::setLoadedImage(std::shared_ptr<const VLImage> image) {
    const std::lock_guard lock(mutex_);
    loadedImage_.swap(image);
}

void VLInboxMessage::loadImageWithCompletion(ImageHandler completionHandler) {
    if (auto image = loadedImage()) return completeOnMainQueue(completionHandler, std::move(image));
    const auto service = service_.lock();
    if (!service) return loadExternalImage(std::move(completionHandler));
    service->loadImageForNotificationId(
        messageId(), service->trackingId(),
        [self = shared_from_this(), handler = std::move(completionHandler)](std::shared_ptr<const VLImage> image) {
            if (!image) return self->loadExternalImage(handler);
            self->setLoadedImage(image);
            completeOnMainQueue(handler, std::move(image));
        });
}

void VLInboxMessage::loadExternalImage(ImageHandler completionHandler) {
    if (auto image = loadedImage()) return completeOnMainQueue(completionHandler, std::move(image));
    const auto service = service_.lock();
    const auto imageURL = cardImage() ? NSURL::URLWithString(*cardImage()) : std::nullopt;
    if (!imageURL) logMessage(VLLogLevel::Debug, "Skipping image download as card has no image");
    if (!imageURL || !service) return completeOnMainQueue(completionHandler, std::shared_ptr<const VLImage>());
    service->downloadImage(
        *imageURL, messageId(),
        [self = shared_from_this(), handler = std::move(completionHandler)](std::shared_ptr<const VLImage> image) {
            if (image) {
                self->setLoadedImage(image);
                if (const auto owner = self->service_.lock()) {
                    owner->saveImage(image->data(), self->messageId(), owner->trackingId(), nullptr);
                }
            }
            completeOnMainQueue(handler, std::move(image));
        });
}

}  // namespace vorlane
