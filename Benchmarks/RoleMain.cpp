// The same roles with a library whose log calls were compiled out, together with the building of their texts.

#include <cstdio>

#include "Benchmarks/Roles.h"

int main(int count, char** arguments) {
    if (count != 3) return 2;
    std::printf("%.9g\n", vorlane::benchmarks::figureOfRole(arguments[2]));
    return 0;
}
