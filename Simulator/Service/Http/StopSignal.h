#pragma once

namespace vorlane::service {

/// Wakes every waiting thread when the service stops. Any thread.
class StopSignal {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    /// Cannot be undone.
    void raise();
    /// Waits until the signal is raised, for at most `seconds`. Returns whether it is raised.
    bool isRaisedWithin(double seconds) const;
    /// Becomes readable when the signal is raised, for use with poll().
    int descriptor() const { return descriptor_; }

private:
    // Fixed at construction.
    const int descriptor_;
};

}  // namespace vorlane::service
