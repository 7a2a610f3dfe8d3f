// A program that is linked with libcurl and SQLite. Prints the time at which main() was reached.

#include <curl/curl.h>
#include <sqlite3.h>

#include "Benchmarks/Programs/PrintTime.h"

int main(int count, char** /*arguments*/) {
    vorlane::benchmarks::printTime();
    // Keeps the libraries linked.
    return count > 100 ? sqlite3_libversion_number() + static_cast<int>(curl_global_init(CURL_GLOBAL_DEFAULT)) : 0;
}
