#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "Simulator/Platform/ScriptedAnswer.h"
#include "Simulator/Platform/SimulatedInboxMessage.h"

namespace vorlane {

struct RecordedRequest;

/// The service's mailboxes: answers the requests of the inbox, and records which messages were read and deleted. Any
/// thread.
class SimulatedMailbox {
public:
    /// Whether the request concerns a mailbox.
    static bool isFor(const NSURLRequest& request);

    /// Adds the message, or replaces the message with its id. Returns the id.
    std::uint64_t add(SimulatedInboxMessage message, double now);
    /// Returns false for an unknown id.
    bool remove(std::uint64_t messageId);
    /// By id, ascending.
    std::vector<SimulatedInboxMessage> messages() const;

    ScriptedAnswer answer(const RecordedRequest& request);

private:
    ScriptedAnswer list(const std::string& user) const;
    ScriptedAnswer message(std::uint64_t messageId) const;
    ScriptedAnswer change(std::uint64_t messageId, const Value& payload);

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::map<std::uint64_t, SimulatedInboxMessage> messages_;
};

}  // namespace vorlane
