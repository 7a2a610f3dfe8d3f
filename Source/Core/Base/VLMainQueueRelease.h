#pragma once

#include <memory>
#include <utility>

#include "Platform/Platform.h"

namespace vorlane {

/// Returns a reference to a host's object for tasks on other queues. Its last copy releases the object on the main
/// queue, where a host's screens expect to be destroyed. Returns null for null.
template <class T>
std::shared_ptr<T> releasedOnMainQueue(std::shared_ptr<T> object) {
    if (!object) return nullptr;
    T* const pointer = object.get();
    return {pointer, [object = std::move(object), queue = Platform::current().mainQueue()](T*) mutable {
                queue->post([last = std::move(object)] {});
            }};
}

}  // namespace vorlane
