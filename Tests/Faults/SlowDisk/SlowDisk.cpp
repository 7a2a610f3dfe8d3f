// A library to preload: every flush of the named program takes 20 ms longer, as on a memory card, and is noted in a
// file.
//
// SLOW_DISK_PROGRAM: the program's file name. SLOW_DISK_LOG: the file, to which each flush adds a line: "main" for the
// main thread, else the name of the thread.

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

constexpr timespec kDelay{0, 20'000'000};

void note() {
    const char* const program = std::getenv("SLOW_DISK_PROGRAM");
    const char* const log = std::getenv("SLOW_DISK_LOG");
    if (!program || !log || std::strcmp(program, program_invocation_short_name) != 0) return;
    nanosleep(&kDelay, nullptr);
    std::array<char, 32> line{"main"};
    if (syscall(SYS_gettid) != getpid()) pthread_getname_np(pthread_self(), line.data(), line.size() - 1);
    const auto length = std::strlen(line.data());
    line[length] = '\n';
    const int file = open(log, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) return;
    // One call, so that the lines of several threads do not run into each other.
    if (write(file, line.data(), length + 1) < 0) std::abort();
    close(file);
}

int flush(const char* name, int descriptor) {
    note();
    const auto real = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, name));
    return real(descriptor);
}

}  // namespace

extern "C" {

int fsync(int descriptor) { return flush("fsync", descriptor); }

int fdatasync(int descriptor) { return flush("fdatasync", descriptor); }
}
