#include "Inbox/VLSharedLibrary.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include "Public/VLLog.h"

namespace vorlane {

namespace {

void logFailure(const std::string& library) {
    const char* reason = ::dlerror();
    logMessage(VLLogLevel::Error, fmt::format("Cannot use {}: {}", library, reason ? reason : "unknown error"));
}

}  // namespace

VLSharedLibrary::VLSharedLibrary(const char* name) : name_(name), handle_(::dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) logFailure(name_);
}

void* VLSharedLibrary::address(const char* name) const {
    if (!handle_) return nullptr;
    void* const found = ::dlsym(handle_, name);
    if (!found) logFailure(name_);
    return found;
}

}  // namespace vorlane
