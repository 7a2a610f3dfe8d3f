#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLImage.h"
#include "Public/VLTypes.h"

namespace vorlane {

class VLInboxService;

/// One message of the rich inbox. Its content does not change: it is that of the time when the list was made. Any
/// thread.
class VORLANE_EXPORT VLInboxMessage : public std::enable_shared_from_this<VLInboxMessage> {
public:
    /// Receives the image, or null if the message has none or it could not be loaded.
    using ImageHandler = std::function<void(std::shared_ptr<const VLImage> image)>;

    /// The content of a message. A field that the service did not send is `nullopt` or 0. Include `VLValue.h` to make
    /// one.
    struct Content {
        std::uint64_t messageId = 0;
        std::optional<std::string> subject;
        /// The HTML page to show. It starts with `VIEWPORT_META_TAG`.
        std::optional<std::string> htmlContent;
        std::optional<std::string> label;
        std::optional<std::string> url;
        std::optional<std::string> phash;
        /// 0 if unread, 1 if read.
        std::int64_t read = 0;
        /// When the message was created and when it expires, in seconds since 1970.
        double created = 0;
        double end = 0;
        /// The URL of the card's image.
        std::optional<std::string> cardImage;
        std::string cardBackgroundColor = "#FFFFFF";
        std::string cardForegroundColor = "#000000";
        /// Free data of the sender.
        Dictionary metadata;
    };

    VLInboxMessage();
    /// `initWithNotifID:fromService:subject:content:label:url:phash:read:created:end:cardUrl:backgoundColor:
    /// foregroundColor:withMetadata:`. A colour is "#" and six characters from "0" to "F" (which includes ":" to "@")
    /// or "a" to "f"; any other string is replaced by the default.
    VLInboxMessage(Content content, std::weak_ptr<VLInboxService> service);
    ~VLInboxMessage();

    std::uint64_t messageId() const { return content_.messageId; }
    const std::optional<std::string>& subject() const { return content_.subject; }
    const std::optional<std::string>& htmlContent() const { return content_.htmlContent; }
    const std::optional<std::string>& label() const { return content_.label; }
    const std::optional<std::string>& url() const { return content_.url; }
    const std::optional<std::string>& phash() const { return content_.phash; }
    std::int64_t read() const { return content_.read; }
    double created() const { return content_.created; }
    double end() const { return content_.end; }
    const std::optional<std::string>& cardImage() const { return content_.cardImage; }
    const std::string& cardBackgroundColor() const { return content_.cardBackgroundColor; }
    const std::string& cardForegroundColor() const { return content_.cardForegroundColor; }
    const Dictionary& metadata() const { return content_.metadata; }
    /// The service that made the message; empty for a message that the application made.
    const std::weak_ptr<VLInboxService>& service() const { return service_; }
    /// The card's image, or null before it has been loaded.
    std::shared_ptr<const VLImage> loadedImage() const;

    /// `loadImageWithCompletion:` loads the card's image: the one loaded before, otherwise the one in the database,
    /// otherwise it is downloaded (over https, or from the service itself) and stored there. The handler may be empty.
    /// It runs once, on the main queue.
    void loadImageWithCompletion(ImageHandler completionHandler);
    /// `loadExternalImage:` downloads the card's image without reading or writing the database. A load of either kind
    /// that is under way serves both callers.
    void loadExternalImage(ImageHandler completionHandler);

private:
    struct ImageLoad;

    std::shared_ptr<ImageLoad> startLoad(ImageHandler completionHandler);
    void downloadImage(const std::shared_ptr<ImageLoad>& load);
    void endLoad(ImageLoad& load, const std::shared_ptr<const VLImage>& image);

    // Fixed at construction.
    const Content content_;
    const std::weak_ptr<VLInboxService> service_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::shared_ptr<const VLImage> loadedImage_;
    std::weak_ptr<ImageLoad> imageLoad_;
};

}  // namespace vorlane
