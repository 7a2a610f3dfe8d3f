#include <utility>
#include <vector>

#include "Platform/Internal/PropertyListFile.h"

namespace vorlane {

namespace {

struct PostponedWrite {
    const PropertyListFile* file;
    std::function<void()> write;
};

// Of this thread: how many steps live, and what waits for the end of the outermost one.
thread_local int livingSteps = 0;
thread_local std::vector<PostponedWrite> postponedWrites;

}  // namespace

PropertyListFile::Step::Step() { ++livingSteps; }

PropertyListFile::Step::~Step() {
    if (--livingSteps > 0) return;
    for (const auto& postponed : std::exchange(postponedWrites, {})) postponed.write();
}

bool PropertyListFile::Step::postpone(const PropertyListFile& file, std::function<void()> write) {
    if (livingSteps == 0) return false;
    for (const auto& postponed : postponedWrites) {
        if (postponed.file == &file) return true;
    }
    postponedWrites.push_back({&file, std::move(write)});
    return true;
}

void PropertyListFile::Step::drop(const PropertyListFile& file) {
    std::erase_if(postponedWrites, [&file](const auto& postponed) { return postponed.file == &file; });
}

}  // namespace vorlane
