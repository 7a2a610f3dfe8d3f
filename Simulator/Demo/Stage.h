#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Demo/Transcript.h"
#include "Simulator/Support/PhoneProcess.h"
#include "Simulator/Support/ServiceProcess.h"

namespace vorlane::demo {

/// The two programs to play with.
struct Programs {
    std::string phone;
    std::string service;
};

/// What was promised, and whether it held.
struct Promise {
    std::string text;
    bool isKept;
};

/// Where the day is played: one phone and one service, each a process, the transcript, and the promises made on the
/// way.
class Stage {
public:
    explicit Stage(Programs programs);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    static const std::string& appKey();

    support::PhoneProcess& phone() { return *phone_; }
    support::ServiceProcess& service() { return service_; }
    Transcript& transcript() { return transcript_; }

    /// Starts the phone's process, with its files of the run before; its endpoints are the service's, or lead nowhere.
    enum class Network { available, unavailable };
    void switchOn(Network network);
    /// Ends the phone's process, and promises that it ended well.
    void switchOff();

    /// Does one line and waits until nothing is under way; tells in the transcript what it was and what came of it.
    /// Gives the values that its completion handler received, if it had one.
    Array play(const std::string& what, Dictionary line);
    /// The same for a class operation.
    Array call(const std::string& what, const std::string& operation, Array arguments = {});
    /// Lets time pass.
    void wait(double seconds);

    /// The payload of the last request that the service received at an endpoint; an empty object when there was none.
    Value lastPayload(const std::string& endpoint) const;
    /// The phone's stored settings.
    Value settings();

    void promise(const std::string& text, bool isKept);
    const std::vector<Promise>& promises() const { return promises_; }

private:
    std::vector<std::string> phoneNotes(Array& handlerValues);
    std::vector<std::string> serviceNotes();

    const Programs programs_;
    const std::string dataFolder_;
    support::ServiceProcess service_;
    std::unique_ptr<support::PhoneProcess> phone_;
    Transcript transcript_;
    std::vector<Promise> promises_;
    std::size_t requestsTold_ = 0;
    double time_;
};

}  // namespace vorlane::demo
