#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorlane::service {

/// The options of the command line.
struct ServiceOptions {
    std::string host = "127.0.0.1";
    /// 0: any free port.
    int port = 0;
    /// A file, or ":memory:".
    std::string database = ":memory:";
    /// The file that every request is appended to, or "-" for standard output; `nullopt`: none.
    std::optional<std::string> requestLog;
    /// "--help": only the usage is wanted.
    bool wantsHelp = false;

    /// Parses a command line without the program's name. Throws ServiceError for an unusable command line.
    static ServiceOptions fromArguments(const std::vector<std::string>& arguments);
    /// The usage, as printed by "--help".
    static std::string usage();
};

}  // namespace vorlane::service
