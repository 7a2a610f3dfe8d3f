#pragma once

#include <string>
#include <vector>

#include "Simulator/Support/ChildProcess.h"

namespace vorlane::service {

/// The service's program as a process, with standard output and standard error in one stream. Killed on destruction if
/// it still runs.
class ServiceProgram {
public:
    explicit ServiceProgram(const std::vector<std::string>& arguments);

    /// Returns the next line of the output without its end, or an empty string at the end of the output.
    std::string nextLine();
    /// Returns the output up to its end.
    std::string restOfOutput();
    /// Returns the port of a line "listening on http://127.0.0.1:PORT".
    static int portIn(const std::string& line);

    void signal(int number);
    /// Waits for the end. Returns the exit status, or 128 plus the number of the signal that ended it.
    int wait();

private:
    support::ChildProcess process_;
};

}  // namespace vorlane::service
