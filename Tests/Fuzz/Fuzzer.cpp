// The entry points that libFuzzer calls. The target is chosen with --target=NAME, and --list prints the names.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Tests/Fuzz/FuzzTarget.h"

namespace {

const vorlane::fuzz::FuzzTarget* chosenTarget = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    constexpr std::string_view kOption = "--target=";
    for (int i = 1; i < *count; ++i) {
        const std::string_view argument = (*arguments)[i];
        if (argument == "--list") {
            for (const auto& target : vorlane::fuzz::allTargets()) std::puts(target.name);
            std::exit(0);
        }
        if (argument.starts_with(kOption)) chosenTarget = vorlane::fuzz::targetNamed(argument.substr(kOption.size()));
    }
    if (chosenTarget) return 0;
    std::fputs("vorlane-fuzz: name a target with --target=NAME; --list prints them\n", stderr);
    std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    chosenTarget->run({reinterpret_cast<const char*>(data), size});
    return 0;
}
