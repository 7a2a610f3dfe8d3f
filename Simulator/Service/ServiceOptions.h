#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorlane::service {

/// How a service is to run. A plain value.
struct ServiceOptions {
    std::string host = "127.0.0.1";
    /// 0 for any that is free.
    int port = 0;
    /// A file, or ":memory:".
    std::string database = ":memory:";
    /// Where requests are written as they come: a file, or "-" for standard output; nothing for nowhere.
    std::optional<std::string> requestLog;
    /// Only the usage is asked for.
    bool wantsHelp = false;

    /// Reads a command line without the program's name. Throws ServiceError for one that makes no sense.
    static ServiceOptions fromArguments(const std::vector<std::string>& arguments);
    /// What the command line may hold, as text to print.
    static std::string usage();
};

}  // namespace vorlane::service
