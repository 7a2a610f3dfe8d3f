#include "Platform/Linux/Curl/CurlResolver.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <pthread.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>

#include "Platform/Internal/QuietThread.h"

namespace vorlane {

namespace {

// More than a host's connection attempts can go through before a request times out.
constexpr std::size_t kMostAddresses = 16;

std::string addressText(const addrinfo& entry) {
    std::array<char, NI_MAXHOST> text{};
    if (getnameinfo(entry.ai_addr, entry.ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) != 0) {
        return {};
    }
    const std::string address = text.data();
    return entry.ai_family == AF_INET6 ? "[" + address + "]" : address;
}

std::vector<std::string> addressesOf(const std::string& name) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* first = nullptr;
    if (getaddrinfo(name.c_str(), nullptr, &hints, &first) != 0) return {};
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(first, &freeaddrinfo);
    std::vector<std::string> addresses;
    for (const addrinfo* entry = first; entry != nullptr && addresses.size() < kMostAddresses; entry = entry->ai_next) {
        auto address = addressText(*entry);
        if (!address.empty()) addresses.push_back(std::move(address));
    }
    return addresses;
}

void joinAll(std::vector<std::thread> threads) {
    for (auto& thread : threads) thread.join();
}

}  // namespace

CurlResolver::Listener::~Listener() = default;

CurlResolver& CurlResolver::shared() {
    static auto* const resolver = new CurlResolver;
    return *resolver;
}

void CurlResolver::lookUp(const std::string& name, std::weak_ptr<Listener> listener) {
    std::unique_lock lock(mutex_);
    auto question = std::ranges::find(questions_, name, &Question::name);
    if (question == questions_.end()) question = questions_.insert(questions_.end(), {name, {}, false});
    question->listeners.push_back(std::move(listener));
    if (threads_.size() < kMostThreads && !question->isUnderWay) {
        std::thread thread = startQuietThread([this] { run(); });
        if (thread.joinable()) threads_.push_back(std::move(thread));
    }
    // Out of threads: unknown, unless another thread comes to it.
    Answer unanswered{name, {}};
    auto listeners = threads_.empty() ? std::move(question->listeners) : std::vector<std::weak_ptr<Listener>>();
    if (threads_.empty()) questions_.erase(question);
    auto ended = std::exchange(endedThreads_, {});
    lock.unlock();
    joinAll(std::move(ended));
    for (const auto& waiting : listeners) {
        if (const auto alive = waiting.lock()) alive->nameLookedUp(unanswered);
    }
}

bool CurlResolver::waitUntilIdle(TimePoint deadline) {
    std::unique_lock lock(mutex_);
    const bool isIdle = changed_.wait_until(lock, deadline, [this] { return threads_.empty(); });
    auto ended = std::exchange(endedThreads_, {});
    lock.unlock();
    joinAll(std::move(ended));
    return isIdle;
}

void CurlResolver::run() {
    pthread_setname_np(pthread_self(), "vorlane.names");
    std::unique_lock lock(mutex_);
    for (auto question = nextQuestion(); question != questions_.end(); question = nextQuestion()) {
        answer(lock, question);
    }
    endThread();
}

/// Forgets the questions that nobody waits for.
CurlResolver::Questions::iterator CurlResolver::nextQuestion() {
    const auto isAbandoned = [](const Question& question) {
        return !question.isUnderWay && std::ranges::all_of(question.listeners, &std::weak_ptr<Listener>::expired);
    };
    std::erase_if(questions_, isAbandoned);
    return std::ranges::find(questions_, false, &Question::isUnderWay);
}

void CurlResolver::answer(std::unique_lock<std::mutex>& lock, Questions::iterator question) {
    question->isUnderWay = true;
    Answer found{question->name, {}};
    lock.unlock();
    found.addresses = addressesOf(found.name);
    lock.lock();
    const auto listeners = std::move(question->listeners);
    questions_.erase(question);
    lock.unlock();
    for (const auto& listener : listeners) {
        if (const auto alive = listener.lock()) alive->nameLookedUp(found);
    }
    lock.lock();
}

/// Moves the calling thread to those that are to be joined.
void CurlResolver::endThread() {
    const auto self = std::ranges::find(threads_, std::this_thread::get_id(), &std::thread::get_id);
    endedThreads_.push_back(std::move(*self));
    threads_.erase(self);
    changed_.notify_all();
}

}  // namespace vorlane
