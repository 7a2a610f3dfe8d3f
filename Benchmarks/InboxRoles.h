#pragma once

namespace vorlane::benchmarks {

// The inbox, each in a process of its own since the library keeps to one database file. Seconds unless told.

/// Reads the list of 10,000 messages of 4 KB.
double inboxList();
/// A bare SELECT of the same columns over a connection of its own.
double bareInboxList();
/// A list request, until its handler has the list.
double inboxListRequest();
/// What the main thread has to do for that.
double inboxMainThread();
/// The most memory that reading the list takes, as a multiple of the text that it returns.
double inboxListMemory();
/// A first synchronisation of 500 messages, until the handler has them all.
double inboxSynchronisation();
/// The same requests by libcurl alone, and then the same inserts, each over a connection of its own.
double bareInboxSynchronisation();

}  // namespace vorlane::benchmarks
