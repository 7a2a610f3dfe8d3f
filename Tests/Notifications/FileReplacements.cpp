#include "Tests/Notifications/FileReplacements.h"

#include <utility>

namespace vorlane {

namespace {

FileReplacements::Observer& current() {
    // The library replaces a file on the thread that changes its contents.
    static thread_local FileReplacements::Observer observer;
    return observer;
}

}  // namespace

FileReplacements::FileReplacements(Observer observer) { current() = std::move(observer); }

FileReplacements::~FileReplacements() { current() = nullptr; }

}  // namespace vorlane

// The linker replaces calls of rename() by this one.
extern "C" int __real_rename(const char* from, const char* to);
extern "C" int __wrap_rename(const char* from, const char* to);
extern "C" int __wrap_rename(const char* from, const char* to) {
    const int result = __real_rename(from, to);
    if (result == 0 && vorlane::current()) vorlane::current()(to);
    return result;
}
