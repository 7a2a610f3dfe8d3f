#pragma once

namespace vorlane {

/// A descriptor that one thread polls and others make readable. Cheaper to signal than the socket pair of a multi
/// handle.
class EventDescriptor {
public:
    EventDescriptor();
    ~EventDescriptor();
    EventDescriptor(const EventDescriptor&) = delete;
    EventDescriptor& operator=(const EventDescriptor&) = delete;

    /// Whether the system had a descriptor left.
    bool isOpen() const { return descriptor_ >= 0; }
    int descriptor() const { return descriptor_; }

    /// Makes the descriptor readable. Any thread.
    void signal() const;
    /// Makes it unreadable again.
    void drain() const;

private:
    const int descriptor_;
};

}  // namespace vorlane
