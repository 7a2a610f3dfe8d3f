#pragma once

namespace vorlane::benchmarks {

// Measurements of the inbox. Each needs a process of its own, since the library keeps one database file open. They
// return seconds unless stated otherwise.

/// Reading the list of 10,000 messages of 4 KB.
double inboxList();
/// A bare SELECT of the same columns over a connection of its own.
double bareInboxList();
/// A list request, until its handler has the list.
double inboxListRequest();
/// The main thread's part of it.
double inboxMainThread();
/// The peak memory of reading the list, as a multiple of the bytes of the strings that it returns.
double inboxListMemory();
/// A first synchronisation of 500 messages, until the handler has all of them.
double inboxSynchronisation();
/// The same requests by libcurl alone, and then the same inserts, each over a connection of its own.
double bareInboxSynchronisation();

}  // namespace vorlane::benchmarks
