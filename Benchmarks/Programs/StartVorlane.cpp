// A program that is linked with the shared library. Prints the time at which main() was reached.

#include <vorlane/Vorlane.h>

#include "Benchmarks/Programs/PrintTime.h"

int main(int count, char** /*arguments*/) {
    vorlane::benchmarks::printTime();
    // Keeps the library linked.
    if (count > 100) vorlane::Vorlane::setTrackingId("anna");
    return 0;
}
