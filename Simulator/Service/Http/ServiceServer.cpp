#include "Simulator/Service/Http/ServiceServer.h"

#include <fmt/format.h>

#include <chrono>
#include <future>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "Simulator/Service/EngagementService.h"
#include "Simulator/Service/Http/HTTPServer.h"
#include "Simulator/Service/Http/RequestJournal.h"
#include "Simulator/Service/Http/ServiceError.h"
#include "Simulator/Service/Http/ServiceRequest.h"
#include "Simulator/Service/Http/SocketConnection.h"

namespace vorlane::service {
namespace {

constexpr std::size_t kLargestBody = 32UL << 20U;
constexpr std::size_t kMostRequestsTold = 1'000'000;
constexpr int kIdleSecondsTold = 30;

double now() { return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count(); }

/// Headers that the library sets itself.
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

/// Reads the body unchanged; the library would truncate forms and decode other bodies.
void readBody(ServiceRequest& request, const httplib::Request& received, httplib::Response& response,
              const httplib::ContentReader& reader) {
    // Without either header, the library would wait for the client to close the connection.
    if (!received.has_header("Content-Length") && !received.has_header("Transfer-Encoding")) return;
    const auto append = [&request](const char* bytes, size_t size) {
        request.body.append(bytes, size);
        return request.body.size() <= kLargestBody;
    };
    // Files are read to skip them; no endpoint uses them.
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
    if (answer.delivery == Delivery::Raw) connection.writeAll(answer.body);
    if (answer.delivery == Delivery::Truncated) {
        connection.writeAll(fmt::format("HTTP/1.1 {} \r\nContent-Type: {}\r\nContent-Length: {}\r\n\r\n", answer.status,
                                        answer.contentType, answer.body.size()));
        connection.writeAll(std::string_view(answer.body).substr(0, answer.body.size() / 2));
    }
    // Discards what the library writes afterwards.
    connection.cut();
}

void send(const ServiceResponse& answer, httplib::Response& response) {
    if (answer.delivery != ServiceResponse::Delivery::Whole) return sendByHand(answer, HTTPServer::currentConnection());
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
        // Matches every path; the service has a router of its own.
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
        // These values are only announced to the client; SocketConnection limits the real use of a connection.
        server_.set_keep_alive_max_count(kMostRequestsTold).set_keep_alive_timeout(kIdleSecondsTold);
    }

    void answer(const httplib::Request& received, httplib::Response& response, const httplib::ContentReader* reader) {
        auto request = requestOf(received);
        if (reader) readBody(request, received, response, *reader);
        send(service_.answer(request), response);
        if (!request.bodyFailure) return;
        // What follows an incomplete body cannot be parsed as a request.
        response.set_header("Connection", "close");
        HTTPServer::currentConnection().finish();
    }

    void startListening() {
        std::promise<void> started;
        server_.setStartHandler([&started] { started.set_value(); });
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
