#include "Simulator/Service/Http/ServiceServer.h"

#include <fmt/format.h>
#include <httplib.h>

#include <chrono>
#include <future>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "Simulator/Service/EngagementService.h"
#include "Simulator/Service/Http/RequestJournal.h"
#include "Simulator/Service/Http/ServiceError.h"
#include "Simulator/Service/Http/ServiceRequest.h"
#include "Simulator/Service/Http/SocketConnection.h"
#include "Simulator/Service/Http/WorkerThreads.h"

namespace vorlane::service {
namespace {

constexpr std::size_t kLargestBody = 32UL << 20U;
constexpr int kBacklog = 512;
constexpr std::size_t kMostRequestsTold = 1'000'000;
constexpr int kIdleSecondsTold = 30;

double now() { return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count(); }

/// A connection as the HTTP library wants to see one.
class ConnectionStream : public httplib::Stream {
public:
    explicit ConnectionStream(SocketConnection& connection) : connection_(connection) {}

    bool is_readable() const override { return connection_.waitUntilReadable(); }
    bool is_writable() const override { return connection_.waitUntilWritable(); }
    ssize_t read(char* bytes, size_t size) override { return connection_.read(bytes, size); }
    ssize_t write(const char* bytes, size_t size) override { return connection_.write(bytes, size); }
    // Nobody asks who is at the other end.
    void get_remote_ip_and_port(std::string& ip, int& port) const override {
        ip.clear();
        port = 0;
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override {
        ip.clear();
        port = 0;
    }
    socket_t socket() const override { return connection_.socket(); }

private:
    SocketConnection& connection_;
};

class ConnectionQueue : public httplib::TaskQueue {
public:
    void enqueue(std::function<void()> task) override { threads_.run(std::move(task)); }
    void shutdown() override { threads_.finish(); }

private:
    WorkerThreads threads_;
};

/// The connection that the current thread serves.
thread_local SocketConnection* currentConnection = nullptr;

/// The HTTP library's server, but on connections that can be cut.
class HTTPServer : public httplib::Server {
public:
    explicit HTTPServer(const StopSignal& stopSignal) : stopSignal_(stopSignal) {}

    /// The port it got; nothing when it could not be had.
    std::optional<int> bind(const std::string& host, int port) {
        // Without the library's SO_REUSEPORT, which would let two services share a port unnoticed.
        set_socket_options([](socket_t socket) {
            const int yes = 1;
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        const int bound = port == 0 ? bind_to_any_port(host) : bind_to_port(host, port) ? port : -1;
        if (bound <= 0) return std::nullopt;
        // The library's own backlog is so short that a burst of connections loses a second to repetitions.
        ::listen(svr_sock_, kBacklog);
        return bound;
    }

    /// Makes listen_after_bind() return. Unlike stop() it leaves it to that thread to close the socket.
    void stopListening() { ::shutdown(svr_sock_, SHUT_RDWR); }

private:
    bool process_and_close_socket(socket_t socket) override {
        SocketConnection connection(socket, stopSignal_);
        ConnectionStream stream(connection);
        currentConnection = &connection;
        bool isGoing = true;
        while (isGoing && connection.waitUntilReadable()) {
            bool isLast = false;
            isGoing = process_request(stream, false, isLast, nullptr) && !isLast && !connection.isFinished();
        }
        currentConnection = nullptr;
        return true;
    }

    const StopSignal& stopSignal_;
};

/// Headers that the library makes up itself.
bool isOfTheLibrary(const std::string& name) {
    return name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" || name == "LOCAL_PORT";
}

ServiceRequest requestOf(const httplib::Request& received) {
    auto request = ServiceRequest::make(received.method, received.target);
    request.time = now();
    for (const auto& [name, text] : received.headers) {
        if (isOfTheLibrary(name)) continue;
        const auto [header, isNew] = request.headers.emplace(name, text);
        if (!isNew) header->second += ", " + text;
    }
    return request;
}

/// Reads the body as it is; the library would cut forms short and decode others.
void readBody(ServiceRequest& request, const httplib::Request& received, httplib::Response& response,
              const httplib::ContentReader& reader) {
    // Without either of these the library would wait for the client to close the connection.
    if (!received.has_header("Content-Length") && !received.has_header("Transfer-Encoding")) return;
    const auto append = [&request](const char* bytes, size_t size) {
        request.body.append(bytes, size);
        return request.body.size() <= kLargestBody;
    };
    // No endpoint takes files; they are read only to get past them.
    const bool isRead =
        received.is_multipart_form_data()
            ? reader([](const httplib::MultipartFormData&) { return true; }, [](const char*, size_t) { return true; })
            : reader(append);
    if (isRead) return;
    const bool isTooLarge = response.status == 413 || request.body.size() > kLargestBody;
    request.bodyFailure = isTooLarge ? 413 : 400;
    request.body.clear();
}

void sendByHand(const ServiceResponse& answer, SocketConnection& connection) {
    using Delivery = ServiceResponse::Delivery;
    if (answer.delivery == Delivery::raw) connection.writeAll(answer.body);
    if (answer.delivery == Delivery::truncated) {
        connection.writeAll(fmt::format("HTTP/1.1 {} \r\nContent-Type: {}\r\nContent-Length: {}\r\n\r\n", answer.status,
                                        answer.contentType, answer.body.size()));
        connection.writeAll(std::string_view(answer.body).substr(0, answer.body.size() / 2));
    }
    // What the library writes after this goes nowhere.
    connection.cut();
}

void send(const ServiceResponse& answer, httplib::Response& response) {
    if (answer.delivery != ServiceResponse::Delivery::whole) return sendByHand(answer, *currentConnection);
    response.status = answer.status;
    for (const auto& [name, text] : answer.headers) response.set_header(name, text);
    response.set_content(answer.body, answer.contentType);
}

}  // namespace

class ServiceServer::Implementation {
public:
    explicit Implementation(const ServiceOptions& options)
        : host_(options.host),
          journal_(options.requestLog ? std::make_unique<RequestJournal>(*options.requestLog) : nullptr),
          service_(options.database, listener()),
          server_(service_.stopSignal()) {
        serveEverything();
        const auto port = server_.bind(host_, options.port);
        if (!port) throw ServiceError(fmt::format("cannot listen on {}:{}", host_, options.port));
        port_ = *port;
        startListening();
    }

    ~Implementation() {
        service_.stop();
        server_.stopListening();
        thread_.join();
    }

    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    int port() const { return port_; }
    std::string origin() const {
        const bool isIPv6 = host_.find(':') != std::string::npos;
        return fmt::format("http://{}{}{}:{}", isIPv6 ? "[" : "", host_, isIPv6 ? "]" : "", port_);
    }
    EngagementService& service() { return service_; }

private:
    RequestLog::Listener listener() {
        if (!journal_) return nullptr;
        return [this](const RecordedRequest& request) { journal_->write(request); };
    }

    void serveEverything() {
        // Any path at all; the service's own router looks into it.
        const char* any = R"([^]*)";
        const auto withBody = [this](const httplib::Request& received, httplib::Response& response,
                                     const httplib::ContentReader& reader) { answer(received, response, &reader); };
        const auto withoutBody = [this](const httplib::Request& received, httplib::Response& response) {
            answer(received, response, nullptr);
        };
        server_.Get(any, withoutBody).Options(any, withoutBody);
        server_.Post(any, withBody).Put(any, withBody).Patch(any, withBody).Delete(any, withBody);
        server_.set_payload_max_length(kLargestBody);
        server_.set_tcp_nodelay(true);
        // Only told to the client: how often and how long a connection is really used is a SocketConnection's business.
        server_.set_keep_alive_max_count(kMostRequestsTold).set_keep_alive_timeout(kIdleSecondsTold);
    }

    void answer(const httplib::Request& received, httplib::Response& response, const httplib::ContentReader* reader) {
        auto request = requestOf(received);
        if (reader) readBody(request, received, response, *reader);
        send(service_.answer(request), response);
        if (!request.bodyFailure) return;
        // After a body that was not read whole, what follows is no request.
        response.set_header("Connection", "close");
        currentConnection->finish();
    }

    void startListening() {
        std::promise<void> started;
        // The queue is made by the listening thread once nothing can fail any more.
        server_.new_task_queue = [&started] {
            started.set_value();
            return new ConnectionQueue;
        };
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        started.get_future().wait();
    }

    // Fixed at construction.
    const std::string host_;
    const std::unique_ptr<RequestJournal> journal_;
    EngagementService service_;
    HTTPServer server_;
    int port_ = 0;
    std::thread thread_;
};

ServiceServer::ServiceServer(const ServiceOptions& options)
    : implementation_(std::make_unique<Implementation>(options)) {}

ServiceServer::~ServiceServer() = default;

int ServiceServer::port() const { return implementation_->port(); }

std::string ServiceServer::origin() const { return implementation_->origin(); }

EngagementService& ServiceServer::service() { return implementation_->service(); }

}  // namespace vorlane::service
