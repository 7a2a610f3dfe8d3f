#pragma once

#include <curl/curl.h>

#include <string>

namespace vorlane::benchmarks {

/// Sends one request many times by libcurl alone, on as many connections as the library uses.
class BareSender {
public:
    explicit BareSender(std::string url);
    ~BareSender();
    BareSender(const BareSender&) = delete;
    BareSender& operator=(const BareSender&) = delete;

    /// Posts the body `count` times, or sends GET requests if the body is empty.
    void send(const std::string& body, int count);

private:
    CURL* makeTransfer(const std::string& body) const;

    const std::string url_;
    CURLM* const multi_;
};

}  // namespace vorlane::benchmarks
