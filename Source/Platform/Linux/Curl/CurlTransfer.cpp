#include "Platform/Linux/Curl/CurlTransfer.h"

#include <fmt/format.h>
#include <sys/socket.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "Platform/Linux/Curl/CurlDataTask.h"
#include "Platform/Linux/Curl/CurlError.h"
#include "Platform/Linux/Curl/CurlOrigin.h"

namespace vorlane {

namespace {

constexpr const char* kUserAgent = "Vorlane/2.0.1";
constexpr std::size_t kLongestHeader = std::size_t{256} << 10;
// A body of this size goes out in one piece or two; the way of a longer one is watched.
constexpr std::size_t kLongBody = std::size_t{64} << 10;

bool isRedirect(long status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool equalsIgnoringCase(const std::string& text, const char* other) { return curl_strequal(text.c_str(), other) != 0; }

/// A line of a header ends with the line.
bool isClean(const std::string& text) { return text.find_first_of(std::string("\r\n\0", 3)) == std::string::npos; }

}  // namespace

CurlTransfer::CurlTransfer(const TimePoint& now, const CurlCertificates& certificates,
                           std::chrono::milliseconds timeout)
    : now_(now), certificates_(certificates), timeout_(timeout), handle_(curl_easy_init()) {
    setUpForGood();
}

CurlTransfer::~CurlTransfer() = default;

void CurlTransfer::begin(std::shared_ptr<CurlDataTask> task, std::string origin, TimePoint since, CurlLine& line) {
    task_ = std::move(task);
    line_ = &line;
    task_->setTransfer(this);
    origin_ = std::move(origin);
    lastProgress_ = since;
    method_ = task_->request().HTTPMethod;
    hasBody_ = task_->request().HTTPBody.has_value();
    prepare();
}

void CurlTransfer::clear() {
    task_->setTransfer(nullptr);
    task_.reset();
    line_ = nullptr;
    redirectedURL_.reset();
    hasLeftOrigin_ = false;
    redirects_ = 0;
    goesOn_ = false;
    body_ = {};
}

const NSURL& CurlTransfer::url() const { return redirectedURL_ ? *redirectedURL_ : task_->request().URL; }

void CurlTransfer::prepare() {
    body_.clear();
    headerLength_ = 0;
    sent_ = 0;
    isConnected_ = false;
    isTooLong_ = false;
    errorText_.front() = '\0';

    setUpConnection();
    setUpMethod();
    setUpHeaders();
}

/// Sets what is the same for every request.
void CurlTransfer::setUpForGood() {
    CURL* const easy = handle();
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeout_.count()));
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(easy, CURLOPT_USERAGENT, kUserAgent);
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    setUpVerification();
    setUpCallbacks();
}

void CurlTransfer::setUpVerification() {
    CURL* const easy = handle();
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    // Loaded once for all handles of the multi handle; a folder beside the file would make libcurl load anew each time.
    curl_easy_setopt(easy, CURLOPT_CA_CACHE_TIMEOUT, -1L);
    if (certificates_.file.empty() && certificates_.folder.empty()) return;
    curl_easy_setopt(easy, CURLOPT_CAINFO, certificates_.file.empty() ? nullptr : certificates_.file.c_str());
    curl_easy_setopt(easy, CURLOPT_CAPATH, certificates_.folder.empty() ? nullptr : certificates_.folder.c_str());
}

void CurlTransfer::setUpCallbacks() {
    CURL* const easy = handle();
    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText_.data());
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::openSocket);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &CurlTransfer::received);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &CurlTransfer::receivedHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &CurlTransfer::connected);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, &CurlTransfer::progressed);
    curl_easy_setopt(easy, CURLOPT_XFERINFODATA, this);
}

void CurlTransfer::setUpConnection() { curl_easy_setopt(handle(), CURLOPT_URL, url().absoluteString().c_str()); }

/// Sets whatever an earlier request may have left otherwise.
void CurlTransfer::setUpMethod() {
    CURL* const easy = handle();
    const bool isHead = method_ == "HEAD";
    const bool hasPostForm = hasBody_ || method_ == "POST" || method_ == "PUT" || method_ == "PATCH";
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 1L);
    // Of the body that a HEAD only speaks of, nothing is to come.
    curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(isHead ? 0 : kLongestAnswer));
    if (isHead) {
        curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
    } else if (hasPostForm) {
        setUpBody();
    }
    const bool isUsual = isHead || method_ == (hasPostForm ? "POST" : "GET");
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, isUsual ? nullptr : method_.c_str());
}

void CurlTransfer::setUpBody() {
    CURL* const easy = handle();
    const auto& body = task_->request().HTTPBody;
    const bool isEmpty = !hasBody_ || body->empty();
    curl_easy_setopt(easy, CURLOPT_POST, 1L);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(isEmpty ? 0 : body->size()));
    // Not copied: the task outlives the transfer.
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, isEmpty ? "" : reinterpret_cast<const char*>(body->data()));
    if (!isEmpty && body->size() >= kLongBody) curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
}

void CurlTransfer::setUpHeaders() {
    headers_.reset();
    bool hasContentType = false;
    for (const auto& [name, value] : task_->request().allHTTPHeaderFields) {
        if (name.empty() || !isClean(name) || !isClean(value) || leavesOut(name)) continue;
        if (equalsIgnoringCase(name, "Content-Type")) hasContentType = true;
        // Written so, a header without a value is sent instead of left out.
        addHeader(value.empty() ? fmt::format("{};", name) : fmt::format("{}: {}", name, value));
    }
    // Neither a type that nobody named nor a wait for the server's leave.
    if (!hasContentType) addHeader("Content-Type:");
    addHeader("Expect:");
    curl_easy_setopt(handle(), CURLOPT_HTTPHEADER, headers_.get());
}

void CurlTransfer::addHeader(const std::string& line) {
    if (curl_slist* const longer = curl_slist_append(headers_.get(), line.c_str())) {
        // The longer list took the old one over.
        static_cast<void>(headers_.release());
        headers_.reset(longer);
    }
}

bool CurlTransfer::leavesOut(const std::string& headerName) const {
    const auto isOneOf = [&headerName](auto... names) { return (equalsIgnoringCase(headerName, names) || ...); };
    if (isOneOf("Content-Length", "Expect")) return true;
    if (hasLeftOrigin_ && isOneOf("Authorization", "Cookie")) return true;
    const bool hasLostBody = !hasBody_ && task_->request().HTTPBody.has_value();
    return hasLostBody && isOneOf("Content-Type", "Content-Encoding");
}

std::optional<CurlCompletion> CurlTransfer::finish(CURLcode code) {
    goesOn_ = false;
    return code == CURLE_OK ? answered() : failed(code);
}

std::optional<CurlCompletion> CurlTransfer::answered() {
    long status = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    const char* destination = nullptr;
    if (isRedirect(status) && task_->request().followsRedirects)
        curl_easy_getinfo(handle(), CURLINFO_REDIRECT_URL, &destination);
    if (destination != nullptr) return redirected(status, destination);

    auto response = std::make_shared<NSHTTPURLResponse>(url(), status);
    auto data = body_.empty() ? std::nullopt : std::optional(std::move(body_));
    return task_->end(std::move(data), std::move(response), std::nullopt);
}

std::optional<CurlCompletion> CurlTransfer::failed(CURLcode code) {
    CurlFailure failure;
    failure.code = code;
    failure.text = errorText_.data();
    curl_easy_getinfo(handle(), CURLINFO_SSL_VERIFYRESULT, &failure.verification);
    curl_easy_getinfo(handle(), CURLINFO_OS_ERRNO, &failure.systemError);
    failure.isTooLong = isTooLong_;
    failure.isGarbage = code == CURLE_UNSUPPORTED_PROTOCOL && isConnected_ && headerLength_ == 0;
    return task_->endWithError(makeURLError(failure, url()));
}

std::optional<CurlCompletion> CurlTransfer::redirected(long status, const std::string& destination) {
    if (++redirects_ > kMostRedirects) {
        return task_->endWithError(
            makeURLError(NSURLError::httpTooManyRedirects, "There were too many redirects", url()));
    }
    const std::string& source = url().absoluteString();
    auto next = NSURL::URLWithString(destination);
    if (!next || !isWebURL(destination) || (isSecureURL(source) && !isSecureURL(destination))) {
        return task_->endWithError(makeURLError(
            NSURLError::unsupportedURL, "The server redirects to " + destination + ", which is not followed", url()));
    }
    if (originOfURL(source) != originOfURL(destination)) hasLeftOrigin_ = true;
    redirectedURL_ = std::move(next);
    const bool isPost = method_ == "POST";
    if (status == 303 ? method_ != "HEAD" : isPost && (status == 301 || status == 302)) becomeGET();
    goesOn_ = true;
    prepare();
    return std::nullopt;
}

void CurlTransfer::becomeGET() {
    method_ = "GET";
    hasBody_ = false;
}

/// A connection that a program which the host starts does not inherit.
curl_socket_t CurlTransfer::openSocket(void* /*context*/, curlsocktype /*purpose*/, curl_sockaddr* address) {
    return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

std::size_t CurlTransfer::received(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const std::size_t length = size * count;
    if (length > kLongestAnswer - transfer.body_.size()) {
        transfer.isTooLong_ = true;
        return CURL_WRITEFUNC_ERROR;
    }
    transfer.body_.insert(transfer.body_.end(), bytes, bytes + length);
    transfer.lastProgress_ = transfer.now_;
    return length;
}

std::size_t CurlTransfer::receivedHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const std::size_t length = size * count;
    // Behind a redirect it is another host's.
    if (!transfer.redirectedURL_ && std::string_view(bytes, length).starts_with("HTTP/2")) {
        transfer.line_->isMultiplexed = true;
    }
    transfer.headerLength_ += length;
    transfer.lastProgress_ = transfer.now_;
    if (transfer.headerLength_ <= kLongestHeader) return length;
    transfer.isTooLong_ = true;
    return CURL_WRITEFUNC_ERROR;
}

int CurlTransfer::connected(void* self, char*, char*, int, int) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    transfer.isConnected_ = true;
    if (!transfer.redirectedURL_) transfer.line_->isOpen = true;
    transfer.lastProgress_ = transfer.now_;
    return CURL_PREREQFUNC_OK;
}

int CurlTransfer::progressed(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    if (sent != transfer.sent_) transfer.lastProgress_ = transfer.now_;
    transfer.sent_ = sent;
    return 0;
}

}  // namespace vorlane
