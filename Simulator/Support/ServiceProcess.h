#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Support/ChildProcess.h"

namespace vorlane::support {

/// A running `vorlane-service` on a free port, and its admin interface.
class ServiceProcess {
public:
    /// Starts the program with these additional options and waits until it listens.
    explicit ServiceProcess(const std::string& program, const std::vector<std::string>& options = {});

    const std::string& origin() const { return origin_; }

    // The admin interface: `path` is the part after "/_admin/". Each throws std::runtime_error unless the answer is a
    // success.

    Value get(const std::string& path) const;
    Value put(const std::string& path, const Value& body) const;
    Value post(const std::string& path, const Value& body) const;
    void remove(const std::string& path) const;

    /// Returns the requests that it received at an endpoint, or at every endpoint for "".
    Array requests(const std::string& endpoint = {}) const;

    /// Ends it with SIGTERM and returns the exit status.
    int stop();

private:
    Value ask(const std::string& method, const std::string& path, const std::optional<Value>& body) const;

    ChildProcess process_;
    std::string origin_;
};

}  // namespace vorlane::support
