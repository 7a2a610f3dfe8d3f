#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

namespace vorlane::service {

struct RecordedRequest;

/// Writes each request to a file, one JSON object a line. Any thread.
class RequestJournal {
public:
    /// Appends to the file at this path, or writes to standard output for "-". Throws ServiceError.
    explicit RequestJournal(const std::string& path);

    void write(const RecordedRequest& request);

private:
    struct Closer {
        void operator()(std::FILE* file) const;
    };

    std::mutex mutex_;
    // Guarded by mutex_.
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace vorlane::service
