#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/NSURLSession.h"
#include "Public/VLValue.h"

namespace vorlane {

class SerialDispatchQueue;

/// One request as the simulated network saw it.
struct RecordedRequest {
    NSURLRequest request;
    bool answered = false;
    bool cancelled = false;

    /// The body as text; "" for none.
    std::string bodyText() const;
    /// The JSON of the body, form-encoded ("payload=…") or plain; null when there is none.
    Value payload() const;
    /// The header's value; nothing when it was not set.
    std::optional<std::string> header(const std::string& name) const;
};

/// A network that records every request and answers only as it is told. Handlers run on its own serial queue, as on a
/// real one; a call that answers returns when the handler has run. Any thread but that queue.
class ScriptedURLSession : public NSURLSession, public std::enable_shared_from_this<ScriptedURLSession> {
public:
    explicit ScriptedURLSession(std::shared_ptr<SerialDispatchQueue> delegateQueue);
    ~ScriptedURLSession() override;

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request, CompletionHandler handler) override;

    /// Answers the oldest open request whose URL contains `part`. Throws std::logic_error when there is none.
    void answer(const std::string& part, std::int64_t status, const std::string& body = {});
    /// The same with bytes as they are; nothing means an answer without data.
    void answerData(const std::string& part, std::int64_t status, std::optional<Data> body);
    /// Answers with a response that is not an HTTP one (or with none at all).
    void answerWithoutHTTP(const std::string& part, bool withResponse);
    /// Fails it as the network would, with an error in `NSURLErrorDomain`.
    void fail(const std::string& part, NSURLError code = NSURLError::notConnectedToInternet);

    /// From now on requests whose URL contains `part` are answered at once, open ones included. The newest rule that
    /// fits wins.
    void alwaysAnswer(const std::string& part, std::int64_t status, const std::string& body = {});
    void alwaysFail(const std::string& part, NSURLError code = NSURLError::notConnectedToInternet);
    /// From now on requests stay open again.
    void forgetRules();

    /// Every request that was sent, oldest first; those whose URL contains `part`; the last of them (throws when there
    /// is none).
    std::vector<RecordedRequest> requests(const std::string& part = {}) const;
    RecordedRequest lastRequest(const std::string& part = {}) const;
    /// How many requests wait for an answer.
    std::size_t openRequests() const;

    /// Cancels every open request; further ones fail at once as cancelled.
    void invalidateAndCancel();
    /// The same, but returns before the handlers have run.
    void invalidate();

private:
    struct Impl;
    const std::shared_ptr<Impl> impl_;
};

}  // namespace vorlane
