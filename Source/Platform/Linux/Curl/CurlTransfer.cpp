#include "Platform/Linux/Curl/CurlTransfer.h"

#include <fmt/format.h>
#include <sys/socket.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "Platform/Linux/Curl/CurlDataTask.h"
#include "Platform/Linux/Curl/CurlError.h"
#include "Platform/Linux/Curl/CurlOrigin.h"
#include "Platform/Linux/Device/LinuxEnvironment.h"

namespace vorlane {

namespace {

constexpr const char* kUserAgent = "Vorlane/2.0.1";
constexpr std::size_t kLongestHeader = std::size_t{256} << 10;
// A shorter body is sent in one or two pieces. The progress of a longer one is observed.
constexpr std::size_t kLongBody = std::size_t{64} << 10;
// A proxy and the server behind it. Whatever libcurl needs beyond, it looks up itself.
constexpr int kMostLookUps = 2;

bool isRedirect(long status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool equalsIgnoringCase(const std::string& text, const char* other) { return curl_strequal(text.c_str(), other) != 0; }

/// Whether the string fits into one header line.
bool isClean(const std::string& text) { return text.find_first_of(std::string("\r\n\0", 3)) == std::string::npos; }

}  // namespace

CurlTransfer::CurlTransfer(const TimePoint& now, const CurlSettings& settings)
    : now_(now), settings_(settings), handle_(curl_easy_init()) {
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
    wantedHost_.reset();
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
    needsName_ = false;
    lookUps_ = 0;
    if (addresses_) setAddresses(nullptr);

    setUpConnection();
    setUpMethod();
    setUpHeaders();
}

/// Sets the options that are the same for every request.
void CurlTransfer::setUpForGood() {
    CURL* const easy = handle();
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(settings_.timeout.count()));
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
    if (settings_.proxy) curl_easy_setopt(easy, CURLOPT_PROXY, settings_.proxy->c_str());
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
    // Loaded once for all handles of the multi handle. With a folder beside the file libcurl would load them each time.
    curl_easy_setopt(easy, CURLOPT_CA_CACHE_TIMEOUT, -1L);
    const auto& [file, folder] = settings_.certificates;
    if (file.empty() && folder.empty()) return;
    curl_easy_setopt(easy, CURLOPT_CAINFO, file.empty() ? nullptr : file.c_str());
    curl_easy_setopt(easy, CURLOPT_CAPATH, folder.empty() ? nullptr : folder.c_str());
}

void CurlTransfer::setUpCallbacks() {
    CURL* const easy = handle();
    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText_.data());
    curl_easy_setopt(easy, CURLOPT_RESOLVER_START_FUNCTION, &CurlTransfer::nameNeeded);
    curl_easy_setopt(easy, CURLOPT_RESOLVER_START_DATA, this);
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

/// Sets every option that an earlier request may have changed.
void CurlTransfer::setUpMethod() {
    CURL* const easy = handle();
    const bool isHead = method_ == "HEAD";
    const bool hasPostForm = hasBody_ || method_ == "POST" || method_ == "PUT" || method_ == "PATCH";
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 1L);
    // A response to HEAD has no body, whatever length it states.
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
        // The semicolon makes libcurl send a header without a value.
        addHeader(value.empty() ? fmt::format("{};", name) : fmt::format("{}: {}", name, value));
    }
    // Without these lines libcurl adds a content type of its own, and waits for the server's consent to a long body.
    if (!hasContentType) addHeader("Content-Type:");
    addHeader("Expect:");
    curl_easy_setopt(handle(), CURLOPT_HTTPHEADER, headers_.get());
}

void CurlTransfer::addHeader(const std::string& line) {
    if (curl_slist* const longer = curl_slist_append(headers_.get(), line.c_str())) {
        // The longer list owns the old one.
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
    if (std::exchange(needsName_, false) && code != CURLE_OK) {
        waitForName(code);
        return std::nullopt;
    }
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
            makeURLError(NSURLError::HttpTooManyRedirects, "There were too many redirects", url()));
    }
    const std::string& source = url().absoluteString();
    auto next = NSURL::URLWithString(destination);
    if (!next || !isWebURL(destination) || (isSecureURL(source) && !isSecureURL(destination))) {
        return task_->endWithError(makeURLError(
            NSURLError::UnsupportedURL, "The server redirects to " + destination + ", which is not followed", url()));
    }
    if (originOfURL(source) != originOfURL(destination)) hasLeftOrigin_ = true;
    redirectedURL_ = std::move(next);
    const bool isPost = method_ == "POST";
    if (status == 303 ? method_ != "HEAD" : isPost && (status == 301 || status == 302)) becomeGET();
    goesOn_ = true;
    prepare();
    return std::nullopt;
}

/// Finds out which name `nameNeeded()` kept libcurl from looking up.
void CurlTransfer::waitForName(CURLcode code) {
    ++lookUps_;
    wantsProxy_ = code == CURLE_COULDNT_RESOLVE_PROXY;
    wantedHost_ = wantsProxy_ ? CurlHost::ofProxy(proxy().value_or("")) : CurlHost::ofURL(url().absoluteString());
    if (wantedHost_ && wantedHost_->needsLookUp()) return;
    wantedHost_.reset();
    lookUps_ = kMostLookUps;
    goesOn_ = true;
}

void CurlTransfer::useAddresses(const std::vector<std::string>& addresses) {
    setAddresses(curl_slist_append(nullptr, wantedHost_->entryWithAddresses(addresses).c_str()));
    wantedHost_.reset();
}

std::optional<CurlCompletion> CurlTransfer::failWithUnknownName() {
    CurlFailure failure;
    failure.code = wantsProxy_ ? CURLE_COULDNT_RESOLVE_PROXY : CURLE_COULDNT_RESOLVE_HOST;
    failure.text = fmt::format("Could not resolve {}: {}", wantsProxy_ ? "proxy" : "host", wantedHost_->name);
    return task_->endWithError(makeURLError(failure, url()));
}

/// The proxy in effect, but for "no_proxy".
std::optional<std::string> CurlTransfer::proxy() const {
    if (settings_.proxy) return settings_.proxy->empty() ? std::nullopt : settings_.proxy;
    return proxyFromEnvironment(url().absoluteString(), environmentVariable);
}

void CurlTransfer::setAddresses(curl_slist* entries) {
    curl_easy_setopt(handle(), CURLOPT_RESOLVE, entries);
    addresses_.reset(entries);
}

void CurlTransfer::becomeGET() {
    method_ = "GET";
    hasBody_ = false;
}

/// libcurl is about to look up a name that is not in its cache. Its look-ups block or outlive the request, so it is
/// made to fail, and the name is looked up by `CurlResolver`.
int CurlTransfer::nameNeeded(void* /*resolver*/, void* /*reserved*/, void* self) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    if (transfer.lookUps_ >= kMostLookUps) return 0;
    const auto host = CurlHost::ofURL(transfer.url().absoluteString());
    if (host && !host->needsLookUp() && !transfer.proxy()) return 0;
    transfer.needsName_ = true;
    return 1;
}

/// Opens a socket that programs started by the host do not inherit.
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
    // After a redirect the response may be another host's.
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
