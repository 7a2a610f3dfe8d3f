#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/NSURLSession.h"
#include "Public/VLValue.h"
#include "Simulator/Platform/RecordedRequest.h"
#include "Simulator/Platform/ScriptedAnswer.h"

namespace vorlane {

class SerialDispatchQueue;

/// A network that records every request and answers as a test programs it. A request without an answer stays open.
///
/// Completion handlers run on the session's own serial queue. An operation that answers returns after the handlers have
/// run. Any thread except that queue.
class ScriptedURLSession : public NSURLSession, public std::enable_shared_from_this<ScriptedURLSession> {
public:
    /// Computes the answer to a request. Runs on the session's queue, and must not throw or call the session.
    using Responder = std::function<ScriptedAnswer(const RecordedRequest& request)>;
    using Matcher = std::function<bool(const NSURLRequest& request)>;

    explicit ScriptedURLSession(std::shared_ptr<SerialDispatchQueue> delegateQueue);
    ~ScriptedURLSession() override;

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request, CompletionHandler handler) override;

    /// Answers the oldest open request whose URL contains `part`. Throws std::logic_error if there is none.
    void answer(const std::string& part, std::int64_t status, const std::string& body = {});
    /// As `answer()`, with any bytes; `nullopt` stands for a response without data.
    void answerData(const std::string& part, std::int64_t status, std::optional<Data> body);
    /// As `answer()`, with a response that is not an HTTP response, or without a response.
    void answerWithoutHTTP(const std::string& part, bool withResponse);
    /// As `answer()`, with an error in `NSURLErrorDomain`.
    void fail(const std::string& part, NSURLError code = NSURLError::NotConnectedToInternet);

    /// From now on answers every request whose URL contains `part` immediately, including requests that are open. The
    /// newest matching rule applies; a rule with the same `part` is replaced.
    void alwaysAnswer(const std::string& part, std::int64_t status, const std::string& body = {});
    void alwaysAnswer(const std::string& part, Responder responder);
    void alwaysFail(const std::string& part, NSURLError code = NSURLError::NotConnectedToInternet);
    /// As `alwaysAnswer()`, for the requests that `matches` accepts, on the thread that sends them. A rule with the
    /// same `name` is replaced.
    void alwaysAnswerMatching(const std::string& name, Matcher matches, Responder responder);
    /// Removes all rules.
    void forgetRules();

    /// The requests whose URL contains `part`, oldest first.
    std::vector<RecordedRequest> requests(const std::string& part = {}) const;
    /// The newest request whose URL contains `part`. Throws std::logic_error if there is none.
    RecordedRequest lastRequest(const std::string& part = {}) const;
    /// The number of open requests.
    std::size_t openRequests() const;

    /// Cancels every open request; later requests fail immediately as cancelled.
    void invalidateAndCancel();
    /// As `invalidateAndCancel()`, but returns before the handlers have run.
    void invalidate();

private:
    struct Impl;
    const std::shared_ptr<Impl> impl_;
};

}  // namespace vorlane
