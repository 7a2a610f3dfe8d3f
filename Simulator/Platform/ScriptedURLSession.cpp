#include "Simulator/Platform/ScriptedURLSession.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "Platform/Internal/SerialDispatchQueue.h"

namespace vorlane {

namespace {

// Long enough for the largest answers in the slowest builds; only a hang waits so long.
constexpr std::chrono::seconds kPatience{100};

ScriptedURLSession::Responder always(ScriptedAnswer answer) {
    return [answer = std::move(answer)](const RecordedRequest& /*request*/) { return answer; };
}

bool contains(const NSURLRequest& request, const std::string& part) {
    return request.URL.absoluteString().find(part) != std::string::npos;
}

}  // namespace

struct ScriptedURLSession::Impl {
    /// One request and the handler that waits for its answer.
    struct Entry {
        RecordedRequest record;
        CompletionHandler handler;
        /// Set from the start until the answer: an open request keeps its task alive.
        std::shared_ptr<NSURLSessionDataTask> task = nullptr;

        bool isOpen() const { return !record.answered && !record.cancelled; }
        bool fits(const std::string& part) const { return contains(record.request, part); }
    };
    struct Rule {
        std::string name;
        Matcher matches;
        Responder responder;
    };

    explicit Impl(std::shared_ptr<SerialDispatchQueue> queue) : delegateQueue(std::move(queue)) {}

    void send(const std::shared_ptr<Entry>& entry, std::shared_ptr<NSURLSessionDataTask> task);
    void cancel(const std::shared_ptr<Entry>& entry);
    void answerOldest(const std::string& part, ScriptedAnswer answer);
    void addRule(const Rule& rule);
    bool close(Entry& entry, bool isCancelled);
    std::vector<std::shared_ptr<Entry>> openEntries() const;
    void post(const std::shared_ptr<Entry>& entry, const Responder& responder) const;
    void waitForHandlers() const;

    const std::shared_ptr<SerialDispatchQueue> delegateQueue;

    mutable std::mutex mutex;
    // Guarded by mutex.
    std::deque<std::shared_ptr<Entry>> entries;
    std::vector<Rule> rules;
    bool isInvalid = false;
};

void ScriptedURLSession::Impl::send(const std::shared_ptr<Entry>& entry, std::shared_ptr<NSURLSessionDataTask> task) {
    std::vector<Rule> known;
    bool isCancelled = false;
    {
        const std::lock_guard lock(mutex);
        entry->task = std::move(task);
        entries.push_back(entry);
        known = rules;
        isCancelled = isInvalid;
    }
    if (isCancelled) return cancel(entry);
    // Without the lock, because a matcher is the test's own code.
    const auto rule = std::find_if(known.rbegin(), known.rend(),
                                   [&entry](const Rule& each) { return each.matches(entry->record.request); });
    if (rule != known.rend() && close(*entry, false)) post(entry, rule->responder);
}

void ScriptedURLSession::Impl::cancel(const std::shared_ptr<Entry>& entry) {
    if (close(*entry, true)) post(entry, always({.failure = NSURLError::Cancelled}));
}

/// Returns false if the request is closed already.
bool ScriptedURLSession::Impl::close(Entry& entry, bool isCancelled) {
    const std::lock_guard lock(mutex);
    if (!entry.isOpen()) return false;
    (isCancelled ? entry.record.cancelled : entry.record.answered) = true;
    return true;
}

std::vector<std::shared_ptr<ScriptedURLSession::Impl::Entry>> ScriptedURLSession::Impl::openEntries() const {
    const std::lock_guard lock(mutex);
    std::vector<std::shared_ptr<Entry>> open;
    for (const auto& entry : entries) {
        if (entry->isOpen()) open.push_back(entry);
    }
    return open;
}

void ScriptedURLSession::Impl::post(const std::shared_ptr<Entry>& entry, const Responder& responder) const {
    delegateQueue->post([entry, responder, task = std::exchange(entry->task, nullptr)] {
        const auto answer = responder(entry->record);
        answer.passTo(std::exchange(entry->handler, nullptr), entry->record.request.URL);
    });
}

void ScriptedURLSession::Impl::waitForHandlers() const {
    if (!delegateQueue->isCurrent()) delegateQueue->waitUntilIdle(std::chrono::steady_clock::now() + kPatience);
}

void ScriptedURLSession::Impl::answerOldest(const std::string& part, ScriptedAnswer answer) {
    const auto open = openEntries();
    const auto found =
        std::ranges::find_if(open, [&](const auto& entry) { return entry->fits(part) && close(*entry, false); });
    if (found == open.end()) throw std::logic_error("no open request to " + part);
    post(*found, always(std::move(answer)));
    waitForHandlers();
}

void ScriptedURLSession::Impl::addRule(const Rule& rule) {
    {
        const std::lock_guard lock(mutex);
        std::erase_if(rules, [&rule](const Rule& known) { return known.name == rule.name; });
        rules.push_back(rule);
    }
    for (const auto& entry : openEntries()) {
        if (rule.matches(entry->record.request) && close(*entry, false)) post(entry, rule.responder);
    }
    waitForHandlers();
}

namespace {

/// Passes its request to the session when it is resumed.
class ScriptedTask : public NSURLSessionDataTask, public std::enable_shared_from_this<ScriptedTask> {
public:
    using Send = std::function<void(std::shared_ptr<NSURLSessionDataTask> task)>;

    ScriptedTask(Send send, std::function<void()> cancel) : send_(std::move(send)), cancel_(std::move(cancel)) {}

    void resume() override {
        if (const auto send = take(send_)) send(shared_from_this());
    }

    /// A suspended task is sent first, so that its handler runs.
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
    // An open request and its task hold each other.
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
    impl_->answerOldest(part, ScriptedAnswer::withBody(status, body));
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
    alwaysAnswer(part, always(ScriptedAnswer::withBody(status, body)));
}

void ScriptedURLSession::alwaysAnswer(const std::string& part, Responder responder) {
    alwaysAnswerMatching(
        part, [part](const NSURLRequest& request) { return contains(request, part); }, std::move(responder));
}

void ScriptedURLSession::alwaysFail(const std::string& part, NSURLError code) {
    alwaysAnswer(part, always({.failure = code}));
}

void ScriptedURLSession::alwaysAnswerMatching(const std::string& name, Matcher matches, Responder responder) {
    impl_->addRule({name, std::move(matches), std::move(responder)});
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

std::size_t ScriptedURLSession::openRequests() const { return impl_->openEntries().size(); }

void ScriptedURLSession::invalidateAndCancel() {
    invalidate();
    impl_->waitForHandlers();
}

void ScriptedURLSession::invalidate() {
    {
        const std::lock_guard lock(impl_->mutex);
        impl_->isInvalid = true;
    }
    for (const auto& entry : impl_->openEntries()) impl_->cancel(entry);
}

}  // namespace vorlane
