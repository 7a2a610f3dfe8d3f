#include "Platform/Linux/Loop/LinuxSerialQueue.h"

#include <utility>

#include "Platform/Linux/Application/ExitGate.h"

namespace vorlane {

namespace {

std::function<void()> gated(std::function<void()> task) {
    return [task = std::move(task)]() mutable { ExitGate::shared().run(std::move(task)); };
}

}  // namespace

LinuxSerialQueue::LinuxSerialQueue(std::string label) : queue_(std::move(label)) {}

void LinuxSerialQueue::post(std::function<void()> task) {
    ExitGate::shared().arm();
    queue_.post(gated(std::move(task)));
}

void LinuxSerialQueue::postAfter(TimeInterval delay, std::function<void()> task) {
    ExitGate::shared().arm();
    queue_.postAfter(delay, gated(std::move(task)));
}

}  // namespace vorlane
