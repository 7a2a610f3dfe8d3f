#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/Linux/Curl/CurlHost.h"
#include "Platform/Linux/Curl/CurlSettings.h"
#include "Platform/NSURLSession.h"

namespace vorlane {

class CurlDataTask;

/// What is known about the connections to a host.
struct CurlLine {
    /// A connection was made.
    bool isOpen = false;
    /// A connection carries several requests at a time.
    bool isMultiplexed = false;
};

/// An easy handle that performs one task after another, redirects included. Network thread only.
class CurlTransfer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// The longest accepted body of a response, in bytes after decompression.
    static constexpr std::size_t kLongestAnswer = std::size_t{32} << 20;
    static constexpr int kMostRedirects = 20;

    /// `now` is the network thread's clock, which the owner advances. Both references must outlive the transfer.
    CurlTransfer(const TimePoint& now, const CurlSettings& settings);
    /// The handle must not be in a multi handle.
    ~CurlTransfer();

    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// Takes a task that has waited since `since` and goes to `origin`. Records in `line` what it learns about the
    /// connection; `line` must stay valid until `clear()`.
    void begin(std::shared_ptr<CurlDataTask> task, std::string origin, TimePoint since, CurlLine& line);

    /// Handles the end that libcurl reports. Returns the task's completion, or `nullopt` if the task has ended before,
    /// goes on, or waits for a name.
    std::optional<CurlCompletion> finish(CURLcode code);

    /// Whether `finish()` prepared another request, which has to be added to the multi handle.
    bool goesOn() const { return goesOn_; }

    /// The host whose name has to be looked up before the transfer can go on, if any.
    const std::optional<CurlHost>& wantedHost() const { return wantedHost_; }
    /// Has the transfer use these addresses of the wanted host; it has to be added to the multi handle then.
    void useAddresses(const std::vector<std::string>& addresses);
    /// Ends the task because the name of the wanted host is unknown.
    std::optional<CurlCompletion> failWithUnknownName();

    /// Releases the task and everything received.
    void clear();

    CURL* handle() const { return handle_.get(); }
    const std::shared_ptr<CurlDataTask>& task() const { return task_; }
    const std::string& origin() const { return origin_; }
    /// When the task was resumed, was connected, or last sent or received bytes.
    TimePoint lastProgress() const { return lastProgress_; }
    /// The current URL, after any redirects.
    const NSURL& url() const;

private:
    struct EasyCleanup {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };
    struct ListCleanup {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    void prepare();
    void setUpForGood();
    void setUpVerification();
    void setUpCallbacks();
    void setUpConnection();
    void setUpMethod();
    void setUpBody();
    void setUpHeaders();
    void addHeader(const std::string& line);
    bool leavesOut(const std::string& headerName) const;
    std::optional<CurlCompletion> answered();
    std::optional<CurlCompletion> failed(CURLcode code);
    std::optional<CurlCompletion> redirected(long status, const std::string& destination);
    void becomeGET();
    void waitForName(CURLcode code);
    std::optional<std::string> proxy() const;
    void setAddresses(curl_slist* entries);

    static int nameNeeded(void* resolver, void* reserved, void* self);
    static curl_socket_t openSocket(void* context, curlsocktype purpose, curl_sockaddr* address);
    static std::size_t received(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t receivedHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static int connected(void* self, char* remote, char* local, int remotePort, int localPort);
    static int progressed(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent);

    // Fixed at construction.
    const TimePoint& now_;
    const CurlSettings& settings_;
    const std::unique_ptr<CURL, EasyCleanup> handle_;

    // The current task.
    std::shared_ptr<CurlDataTask> task_;
    std::string origin_;
    TimePoint lastProgress_;
    CurlLine* line_ = nullptr;

    // The current request, which a redirect changes.
    std::optional<NSURL> redirectedURL_;
    std::string method_;
    bool hasBody_ = false;
    bool hasLeftOrigin_ = false;
    int redirects_ = 0;
    bool goesOn_ = false;
    std::unique_ptr<curl_slist, ListCleanup> headers_;

    // Names on the way of the current request.
    bool needsName_ = false;
    bool wantsProxy_ = false;
    int lookUps_ = 0;
    std::optional<CurlHost> wantedHost_;
    std::unique_ptr<curl_slist, ListCleanup> addresses_;

    // Its response.
    Data body_;
    std::size_t headerLength_ = 0;
    curl_off_t sent_ = 0;
    bool isConnected_ = false;
    bool isTooLong_ = false;
    std::array<char, CURL_ERROR_SIZE> errorText_{};
};

}  // namespace vorlane
