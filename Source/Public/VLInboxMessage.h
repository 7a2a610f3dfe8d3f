#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLImage.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLInboxService;

/// One message of the rich inbox, as the application shows it. What it says is as it was when the list was made. Any
/// thread.
class VORLANE_EXPORT VLInboxMessage : public std::enable_shared_from_this<VLInboxMessage> {
public:
    /// Null when there is no image, or none that could be loaded.
    using ImageHandler = std::function<void(std::shared_ptr<const VLImage> image)>;

    /// What a message says. What the service did not send is nothing, or 0.
    struct Content {
        std::uint64_t messageId = 0;
        std::optional<std::string> subject;
        /// The page to show: HTML with a viewport tag in front.
        std::optional<std::string> htmlContent;
        std::optional<std::string> label;
        std::optional<std::string> url;
        std::optional<std::string> phash;
        /// 0 unread, 1 read.
        std::int64_t read = 0;
        /// Seconds since 1970.
        double created = 0;
        double end = 0;
        /// The URL of the card's image.
        std::optional<std::string> cardImage;
        std::string cardBackgroundColor = "#FFFFFF";
        std::string cardForegroundColor = "#000000";
        /// Free data of whoever sent the message.
        Dictionary metadata;
    };

    VLInboxMessage();
    /// `initWithNotifID:fromService:subject:content:label:url:phash:read:created:end:cardUrl:backgoundColor:
    /// foregroundColor:withMetadata:`. A colour that is not "#" and six characters from "0" to "F" (":" to "@" among
    /// them) or "a" to "f" leaves the default.
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
    /// The service that made it; empty for a message of the host's own.
    const std::weak_ptr<VLInboxService>& service() const { return service_; }
    /// The card's image once it was loaded; null before.
    std::shared_ptr<const VLImage> loadedImage() const;

    /// `loadImageWithCompletion:` gives the card's image: the one loaded before, else the one in the database, else it
    /// downloads it (over https, or from the service itself) and keeps it there. The handler may be empty; it runs
    /// once, on the main queue.
    void loadImageWithCompletion(ImageHandler completionHandler);
    /// `loadExternalImage:` does so past the database. A load of either kind that is under way serves both callers.
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
