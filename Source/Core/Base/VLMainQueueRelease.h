#pragma once

#include <memory>
#include <utility>

#include "Platform/Platform.h"

namespace vorlane {

/// A reference to a host's object for tasks on other queues: whichever of its copies goes last, the object itself is
/// let go of on the main queue, where a host's screens expect to end. Null for null.
template <class T>
std::shared_ptr<T> releasedOnMainQueue(std::shared_ptr<T> object) {
    if (!object) return nullptr;
    T* const pointer = object.get();
    return {pointer, [object = std::move(object), queue = Platform::current().mainQueue()](T*) mutable {
                queue->post([last = std::move(object)] {});
            }};
}

}  // namespace vorlane
