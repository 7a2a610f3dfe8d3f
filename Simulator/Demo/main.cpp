// Plays a day of an application, with the phone and the service as two processes, and prints their traffic.

#include <cstdio>
#include <exception>
#include <string_view>

#include "Simulator/Demo/Chapters.h"
#include "Simulator/Demo/Summary.h"

namespace {

constexpr const char* kUsage =
    "usage: vorlane-demo PHONE_PROGRAM SERVICE_PROGRAM\n"
    "\n"
    "Plays a day of an application on vorlane-phone against vorlane-service. Prints the requests, the notifications "
    "and\n"
    "what the service has stored, and checks what the library promises. Ends with status 0 if every promise is kept.\n";

}  // namespace

int main(int count, char** arguments) {
    using namespace vorlane::demo;
    if (count == 2 && arguments[1] == std::string_view("--help")) return std::fputs(kUsage, stdout) < 0 ? 1 : 0;
    if (count != 3) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    try {
        Stage stage({arguments[1], arguments[2]});
        for (const auto& chapter : allChapters()) {
            stage.transcript().chapter(chapter.title);
            chapter.play(stage);
        }
        return tellSummary(stage) ? 0 : 1;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "vorlane-demo: %s\n", exception.what());
        return 1;
    }
}
