#pragma once

#include <curl/curl.h>

#include <string>

namespace vorlane::benchmarks {

/// Requests with nothing but libcurl: the same one many times, on as many connections as the library uses.
class BareSender {
public:
    explicit BareSender(std::string url);
    ~BareSender();
    BareSender(const BareSender&) = delete;
    BareSender& operator=(const BareSender&) = delete;

    /// Posts the body that often; gets what is there when the body is empty.
    void send(const std::string& body, int count);

private:
    CURL* makeTransfer(const std::string& body) const;

    const std::string url_;
    CURLM* const multi_;
};

}  // namespace vorlane::benchmarks
