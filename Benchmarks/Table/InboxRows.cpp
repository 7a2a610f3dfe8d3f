#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

std::vector<Row> inboxRows(const Results& results) {
    const auto list = results.seconds("InboxList");
    const auto bareList = results.seconds("BareInboxList");
    const auto request = results.seconds("InboxListRequest");
    const auto mainThread = results.seconds("InboxMainThread");
    const auto synchronisation = results.seconds("InboxSynchronisation");
    const auto bareSynchronisation = results.seconds("BareInboxSynchronisation");
    return {
        {.what = "read a list of 10,000 messages of 4 KB",
         .measured = milliseconds(list),
         .bare = milliseconds(bareList) + " SELECT",
         .figure = list / bareList,
         .unit = "times",
         .target = 3},
        {.what = "its peak memory, beside the strings returned",
         .figure = results.counter("InboxListMemory.figure"),
         .unit = "times",
         .target = 2.5},
        {.what = "a list request, until its handler has the list",
         .measured = milliseconds(request),
         .figure = request * 1e3,
         .unit = "ms"},
        {.what = "the same: time on the main thread",
         .measured = microseconds(mainThread),
         .figure = mainThread * 1e6,
         .unit = "µs",
         .target = 50},
        {.what = "a first synchronisation of 500 messages",
         .measured = milliseconds(synchronisation),
         .bare = milliseconds(bareSynchronisation) + " libcurl, and inserts",
         .figure = synchronisation / bareSynchronisation,
         .unit = "times",
         .target = 1.3},
    };
}

}  // namespace vorlane::benchmarks
