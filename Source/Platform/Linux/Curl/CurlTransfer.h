#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Linux/Curl/CurlCertificates.h"
#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/NSURLSession.h"

namespace vorlane {

class CurlDataTask;

/// What is known of the way to a host.
struct CurlLine {
    /// A connection was made.
    bool isOpen = false;
    /// It carries several requests side by side.
    bool isMultiplexed = false;
};

/// An easy handle at work on one task after another, redirects included. Network thread only.
class CurlTransfer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// The longest answer that is taken, in bytes after decompression.
    static constexpr std::size_t kLongestAnswer = std::size_t{32} << 20;
    static constexpr int kMostRedirects = 20;

    /// `now` is the network thread's clock, which its owner moves on; `certificates` are used for https alone. A
    /// transfer may spend `timeout` on reaching the server.
    CurlTransfer(const TimePoint& now, const CurlCertificates& certificates, std::chrono::milliseconds timeout);
    /// The handle must be out of libcurl's hands.
    ~CurlTransfer();

    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// Takes up the task, which has been waiting `since` then. `origin` is where it goes; what is learnt on the way is
    /// noted in `line`, which must outlive the task's stay.
    void begin(std::shared_ptr<CurlDataTask> task, std::string origin, TimePoint since, CurlLine& line);

    /// Reads the end of the transfer as libcurl tells it: gives the task's completion, unless the task has ended
    /// otherwise or goes on.
    std::optional<CurlCompletion> finish(CURLcode code);

    /// Whether `finish()` found a redirect and prepared the next request, to be handed to libcurl again.
    bool goesOn() const { return goesOn_; }

    /// Lets go of the task and of all that was received, ready for the next task.
    void clear();

    CURL* handle() const { return handle_.get(); }
    const std::shared_ptr<CurlDataTask>& task() const { return task_; }
    const std::string& origin() const { return origin_; }
    /// When the transfer last made progress: was asked for, had its connection, sent or got bytes.
    TimePoint lastProgress() const { return lastProgress_; }
    /// The URL under way, after any redirects.
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

    static curl_socket_t openSocket(void* context, curlsocktype purpose, curl_sockaddr* address);
    static std::size_t received(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t receivedHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static int connected(void* self, char* remote, char* local, int remotePort, int localPort);
    static int progressed(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent);

    // Fixed at construction.
    const TimePoint& now_;
    const CurlCertificates& certificates_;
    const std::chrono::milliseconds timeout_;
    const std::unique_ptr<CURL, EasyCleanup> handle_;

    // The task at hand.
    std::shared_ptr<CurlDataTask> task_;
    std::string origin_;
    TimePoint lastProgress_;
    CurlLine* line_ = nullptr;

    // The request under way, which a redirect changes.
    std::optional<NSURL> redirectedURL_;
    std::string method_;
    bool hasBody_ = false;
    bool hasLeftOrigin_ = false;
    int redirects_ = 0;
    bool goesOn_ = false;
    std::unique_ptr<curl_slist, ListCleanup> headers_;

    // Its answer.
    Data body_;
    std::size_t headerLength_ = 0;
    curl_off_t sent_ = 0;
    bool isConnected_ = false;
    bool isTooLong_ = false;
    std::array<char, CURL_ERROR_SIZE> errorText_{};
};

}  // namespace vorlane
