#include "Platform/Linux/Curl/EventDescriptor.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace vorlane {

EventDescriptor::EventDescriptor() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

EventDescriptor::~EventDescriptor() {
    if (isOpen()) close(descriptor_);
}

void EventDescriptor::signal() const { eventfd_write(descriptor_, 1); }

void EventDescriptor::drain() const {
    eventfd_t count = 0;
    eventfd_read(descriptor_, &count);
}

}  // namespace vorlane
