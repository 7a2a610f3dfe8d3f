#include "Benchmarks/Support/BareSender.h"

#include <cstddef>
#include <utility>

namespace vorlane::benchmarks {

namespace {

constexpr long kConnections = 6;

std::size_t discard(char* /*bytes*/, std::size_t size, std::size_t count, void* /*context*/) { return size * count; }

}  // namespace

BareSender::BareSender(std::string url) : url_(std::move(url)), multi_(curl_multi_init()) {
    curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, kConnections);
}

BareSender::~BareSender() { curl_multi_cleanup(multi_); }

void BareSender::send(const std::string& body, int count) {
    int begun = 0;
    int running = 0;
    for (; begun < kConnections && begun < count; ++begun) curl_multi_add_handle(multi_, makeTransfer(body));
    for (int done = 0; done < count;) {
        curl_multi_perform(multi_, &running);
        int left = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
            CURL* transfer = message->easy_handle;
            curl_multi_remove_handle(multi_, transfer);
            ++done;
            if (begun++ < count) {
                curl_multi_add_handle(multi_, transfer);
            } else {
                curl_easy_cleanup(transfer);
            }
        }
        if (done < count) curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
    }
}

CURL* BareSender::makeTransfer(const std::string& body) const {
    CURL* transfer = curl_easy_init();
    curl_easy_setopt(transfer, CURLOPT_URL, url_.c_str());
    curl_easy_setopt(transfer, CURLOPT_WRITEFUNCTION, &discard);
    if (body.empty()) return transfer;
    curl_easy_setopt(transfer, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    curl_easy_setopt(transfer, CURLOPT_POSTFIELDS, body.c_str());
    return transfer;
}

}  // namespace vorlane::benchmarks
