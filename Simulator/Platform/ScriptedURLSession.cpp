#include "Simulator/Platform/ScriptedURLSession.h"

#include <chrono>
#include <deque>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "Platform/Internal/SerialDispatchQueue.h"

namespace vorlane {

namespace {

// Long enough for the largest answers in the slowest builds; only a hang takes it up.
constexpr std::chrono::seconds kPatience{100};

/// What a request gets: bytes with a status, something else than HTTP, nothing, or an error.
struct ScriptedAnswer {
    std::int64_t status = 0;
    std::optional<Data> body = std::nullopt;
    bool isHTTP = true;
    bool hasResponse = true;
    std::optional<NSURLError> failure = std::nullopt;
};

Data bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

NSError errorOf(NSURLError code, const NSURL& url) {
    return {NSURLErrorDomain, static_cast<std::int64_t>(code), {{"NSErrorFailingURLStringKey", url.absoluteString()}}};
}

std::shared_ptr<const NSURLResponse> responseOf(const ScriptedAnswer& answer, const NSURL& url) {
    if (!answer.hasResponse) return nullptr;
    if (!answer.isHTTP) return std::make_shared<NSURLResponse>(url);
    return std::make_shared<NSHTTPURLResponse>(url, answer.status);
}

void give(const NSURLSession::CompletionHandler& handler, const ScriptedAnswer& answer, const NSURL& url) {
    if (!handler) return;
    if (answer.failure) return handler(std::nullopt, nullptr, errorOf(*answer.failure, url));
    handler(answer.body, responseOf(answer, url), std::nullopt);
}

int hexadecimalValue(char character) {
    constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
    const auto place = kDigits.find(character);
    if (place == std::string_view::npos) return 0;
    return static_cast<int>(place < 16 ? place : place - 6);
}

std::string percentDecoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            result += static_cast<char>(hexadecimalValue(text[i + 1]) * 16 + hexadecimalValue(text[i + 2]));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

}  // namespace

std::string RecordedRequest::bodyText() const {
    if (!request.HTTPBody) return {};
    return {request.HTTPBody->begin(), request.HTTPBody->end()};
}

Value RecordedRequest::payload() const {
    constexpr std::string_view kField = "payload=";
    auto text = bodyText();
    if (text.starts_with(kField)) text = percentDecoded(std::string_view(text).substr(kField.size()));
    auto parsed = Value::parse(text, nullptr, false);
    return parsed.is_discarded() ? Value() : parsed;
}

std::optional<std::string> RecordedRequest::header(const std::string& name) const {
    const auto found = request.allHTTPHeaderFields.find(name);
    if (found == request.allHTTPHeaderFields.end()) return std::nullopt;
    return found->second;
}

struct ScriptedURLSession::Impl {
    /// One request and whoever waits for its answer.
    struct Entry {
        RecordedRequest record;
        CompletionHandler handler;
        /// The task from its start until the answer: a request on its way keeps it alive.
        std::shared_ptr<NSURLSessionDataTask> task = nullptr;

        bool isOpen() const { return !record.answered && !record.cancelled; }
        bool fits(const std::string& part) const {
            return record.request.URL.absoluteString().find(part) != std::string::npos;
        }
    };
    struct Rule {
        std::string part;
        ScriptedAnswer answer;
    };

    explicit Impl(std::shared_ptr<SerialDispatchQueue> queue) : delegateQueue(std::move(queue)) {}

    void send(const std::shared_ptr<Entry>& entry, std::shared_ptr<NSURLSessionDataTask> task);
    void cancel(const std::shared_ptr<Entry>& entry);
    void answerOldest(const std::string& part, const ScriptedAnswer& answer);
    void addRule(const std::string& part, const ScriptedAnswer& answer);
    void closeAs(Entry& entry, bool isCancelled);
    void post(const std::shared_ptr<Entry>& entry, const ScriptedAnswer& answer) const;
    void waitForHandlers() const;

    const std::shared_ptr<SerialDispatchQueue> delegateQueue;

    mutable std::mutex mutex;
    // Guarded by mutex.
    std::deque<std::shared_ptr<Entry>> entries;
    std::vector<Rule> rules;
    bool isInvalid = false;
};

void ScriptedURLSession::Impl::send(const std::shared_ptr<Entry>& entry, std::shared_ptr<NSURLSessionDataTask> task) {
    std::optional<ScriptedAnswer> answer;
    {
        const std::lock_guard lock(mutex);
        entry->task = std::move(task);
        entries.push_back(entry);
        if (isInvalid) {
            answer = ScriptedAnswer{.failure = NSURLError::cancelled};
        } else {
            for (const auto& rule : rules) {
                if (entry->fits(rule.part)) answer = rule.answer;
            }
        }
        if (answer) closeAs(*entry, isInvalid);
    }
    if (answer) post(entry, *answer);
}

void ScriptedURLSession::Impl::cancel(const std::shared_ptr<Entry>& entry) {
    {
        const std::lock_guard lock(mutex);
        if (!entry->isOpen()) return;
        closeAs(*entry, true);
    }
    post(entry, {.failure = NSURLError::cancelled});
}

void ScriptedURLSession::Impl::closeAs(Entry& entry, bool isCancelled) {
    (isCancelled ? entry.record.cancelled : entry.record.answered) = true;
}

void ScriptedURLSession::Impl::post(const std::shared_ptr<Entry>& entry, const ScriptedAnswer& answer) const {
    delegateQueue->post([entry, answer, task = std::exchange(entry->task, nullptr)] {
        give(std::exchange(entry->handler, nullptr), answer, entry->record.request.URL);
    });
}

void ScriptedURLSession::Impl::waitForHandlers() const {
    if (!delegateQueue->isCurrent()) delegateQueue->waitUntilIdle(std::chrono::steady_clock::now() + kPatience);
}

void ScriptedURLSession::Impl::answerOldest(const std::string& part, const ScriptedAnswer& answer) {
    std::shared_ptr<Entry> found;
    {
        const std::lock_guard lock(mutex);
        for (const auto& entry : entries) {
            if (!entry->isOpen() || !entry->fits(part)) continue;
            found = entry;
            closeAs(*found, false);
            break;
        }
    }
    if (!found) throw std::logic_error("no open request to " + part);
    post(found, answer);
    waitForHandlers();
}

void ScriptedURLSession::Impl::addRule(const std::string& part, const ScriptedAnswer& answer) {
    std::vector<std::shared_ptr<Entry>> open;
    {
        const std::lock_guard lock(mutex);
        rules.push_back({part, answer});
        for (const auto& entry : entries) {
            if (!entry->isOpen() || !entry->fits(part)) continue;
            closeAs(*entry, false);
            open.push_back(entry);
        }
    }
    for (const auto& entry : open) post(entry, answer);
    waitForHandlers();
}

namespace {

/// A task that hands its request to the session when it is resumed.
class ScriptedTask : public NSURLSessionDataTask, public std::enable_shared_from_this<ScriptedTask> {
public:
    using Send = std::function<void(std::shared_ptr<NSURLSessionDataTask> task)>;

    ScriptedTask(Send send, std::function<void()> cancel) : send_(std::move(send)), cancel_(std::move(cancel)) {}

    void resume() override {
        if (const auto send = take(send_)) send(shared_from_this());
    }

    /// One that was not resumed yet is sent first, so that its handler runs.
    void cancel() override {
        resume();
        if (const auto cancel = take(cancel_)) cancel();
    }

private:
    template <class Function>
    Function take(Function& function) {
        const std::lock_guard lock(mutex_);
        return std::exchange(function, nullptr);
    }

    std::mutex mutex_;
    // Guarded by mutex_; empty once called.
    Send send_;
    std::function<void()> cancel_;
};

}  // namespace

ScriptedURLSession::ScriptedURLSession(std::shared_ptr<SerialDispatchQueue> delegateQueue)
    : impl_(std::make_shared<Impl>(std::move(delegateQueue))) {}

ScriptedURLSession::~ScriptedURLSession() {
    // Requests that were never answered: they and their tasks hold each other.
    std::vector<std::shared_ptr<NSURLSessionDataTask>> tasks;
    const std::lock_guard lock(impl_->mutex);
    for (const auto& entry : impl_->entries) {
        if (entry->isOpen()) tasks.push_back(std::exchange(entry->task, nullptr));
    }
}

std::shared_ptr<NSURLSessionDataTask> ScriptedURLSession::dataTaskWithRequest(NSURLRequest request,
                                                                              CompletionHandler handler) {
    auto entry = std::make_shared<Impl::Entry>(Impl::Entry{{std::move(request)}, std::move(handler)});
    return std::make_shared<ScriptedTask>([impl = impl_, entry](auto task) { impl->send(entry, std::move(task)); },
                                          [impl = impl_, entry] { impl->cancel(entry); });
}

void ScriptedURLSession::answer(const std::string& part, std::int64_t status, const std::string& body) {
    answerData(part, status, body.empty() ? std::nullopt : std::optional<Data>(bytesOf(body)));
}

void ScriptedURLSession::answerData(const std::string& part, std::int64_t status, std::optional<Data> body) {
    impl_->answerOldest(part, {.status = status, .body = std::move(body)});
}

void ScriptedURLSession::answerWithoutHTTP(const std::string& part, bool withResponse) {
    impl_->answerOldest(part, {.isHTTP = false, .hasResponse = withResponse});
}

void ScriptedURLSession::fail(const std::string& part, NSURLError code) {
    impl_->answerOldest(part, {.failure = code});
}

void ScriptedURLSession::alwaysAnswer(const std::string& part, std::int64_t status, const std::string& body) {
    impl_->addRule(part, {.status = status, .body = body.empty() ? std::nullopt : std::optional<Data>(bytesOf(body))});
}

void ScriptedURLSession::alwaysFail(const std::string& part, NSURLError code) {
    impl_->addRule(part, {.failure = code});
}

void ScriptedURLSession::forgetRules() {
    const std::lock_guard lock(impl_->mutex);
    impl_->rules.clear();
}

std::vector<RecordedRequest> ScriptedURLSession::requests(const std::string& part) const {
    const std::lock_guard lock(impl_->mutex);
    std::vector<RecordedRequest> found;
    for (const auto& entry : impl_->entries) {
        if (entry->fits(part)) found.push_back(entry->record);
    }
    return found;
}

RecordedRequest ScriptedURLSession::lastRequest(const std::string& part) const {
    const auto found = requests(part);
    if (found.empty()) throw std::logic_error("no request to " + part);
    return found.back();
}

std::size_t ScriptedURLSession::openRequests() const {
    const std::lock_guard lock(impl_->mutex);
    std::size_t count = 0;
    for (const auto& entry : impl_->entries) count += entry->isOpen() ? 1 : 0;
    return count;
}

void ScriptedURLSession::invalidateAndCancel() {
    invalidate();
    impl_->waitForHandlers();
}

void ScriptedURLSession::invalidate() {
    std::vector<std::shared_ptr<Impl::Entry>> open;
    {
        const std::lock_guard lock(impl_->mutex);
        impl_->isInvalid = true;
        for (const auto& entry : impl_->entries) {
            if (!entry->isOpen()) continue;
            impl_->closeAs(*entry, true);
            open.push_back(entry);
        }
    }
    for (const auto& entry : open) impl_->post(entry, {.failure = NSURLError::cancelled});
}

}  // namespace vorlane
