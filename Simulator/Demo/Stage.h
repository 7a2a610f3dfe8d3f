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

/// The paths of the two programs.
struct Programs {
    std::string phone;
    std::string service;
};

/// A checked promise of the library.
struct Promise {
    std::string text;
    bool isKept;
};

/// Plays the day: runs one phone and one service as processes, writes the transcript, and collects the promises.
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

    /// Starts the phone's process with the files of the previous run. Its endpoints are the service's, or unreachable.
    enum class Network { Available, Unavailable };
    void switchOn(Network network);
    /// Ends the phone's process, and promises status 0.
    void switchOff();

    /// Sends one line, settles, and writes both to the transcript. Returns the values that the line's completion
    /// handler received, if it has one.
    Array play(const std::string& what, Dictionary line);
    /// As `play()`, for a class operation.
    Array call(const std::string& what, const std::string& operation, Array arguments = {});
    /// Advances the phone's clock.
    void wait(double seconds);

    /// Returns the payload of the last request to an endpoint, or an empty object without one.
    Value lastPayload(const std::string& endpoint) const;
    /// Returns the phone's stored settings.
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
