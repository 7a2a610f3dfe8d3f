#pragma once

namespace vorlane::service {

/// Says that the service is to stop, to every thread that waits for something else. Any thread.
class StopSignal {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    /// For good.
    void raise();
    /// Whether it is raised within so many seconds.
    bool isRaisedWithin(double seconds) const;
    /// Becomes readable when it is raised; to be polled along with others.
    int descriptor() const { return descriptor_; }

private:
    // Fixed at construction.
    const int descriptor_;
};

}  // namespace vorlane::service
