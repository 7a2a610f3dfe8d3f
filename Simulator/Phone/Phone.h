#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Public/VLInboxMessage.h"
#include "Public/VLValue.h"
#include "Simulator/Phone/PhoneOptions.h"
#include "Simulator/Phone/PhoneOutput.h"
#include "Simulator/Platform/SimulatedPhone.h"

namespace vorlane::phone {

/// The host application: processes one line after another with the library and the simulated phone, and answers each.
/// Main thread only.
class Phone {
public:
    /// Processes one kind of line and returns the reply's value. Throws BadLine for an unusable line.
    using Command = std::function<Value(Phone& phone, const Dictionary& line)>;
    using Commands = std::map<std::string, Command>;

    explicit Phone(const PhoneOptions& options);
    ~Phone();
    Phone(const Phone&) = delete;
    Phone& operator=(const Phone&) = delete;

    /// Answers one line of any content.
    void take(const std::string& line);
    /// Whether a line asked to quit.
    bool hasQuit() const { return hasQuit_; }
    void quit() { hasQuit_ = true; }

    const PhoneOptions& options() const { return options_; }
    SimulatedPhone& device() { return *device_; }
    PhoneOutput& output() { return output_; }
    /// The last list that an inbox handler received.
    std::vector<std::shared_ptr<VLInboxMessage>>& inboxMessages() { return inboxMessages_; }

private:
    void answer(const Dictionary& line, const Value& id);

    const PhoneOptions options_;
    PhoneOutput output_;
    std::shared_ptr<SimulatedPhone> device_;
    const Commands commands_;
    std::vector<std::shared_ptr<VLInboxMessage>> inboxMessages_;
    bool hasQuit_ = false;
};

}  // namespace vorlane::phone
