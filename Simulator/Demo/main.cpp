// Lives through an application's day: the phone and the service as two processes, and what passes between them.

#include <cstdio>
#include <exception>

#include "Simulator/Demo/Chapters.h"
#include "Simulator/Demo/Summary.h"

int main(int count, char** arguments) {
    using namespace vorlane::demo;
    if (count != 3) {
        std::fprintf(stderr, "usage: vorlane-demo PHONE_PROGRAM SERVICE_PROGRAM\n");
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
