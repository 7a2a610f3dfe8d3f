#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vorlane::service {

/// The program as a process of its own, killed in the end if it still runs.
class ServiceProgram {
public:
    explicit ServiceProgram(const std::vector<std::string>& arguments);
    ~ServiceProgram();
    ServiceProgram(const ServiceProgram&) = delete;
    ServiceProgram& operator=(const ServiceProgram&) = delete;

    /// The next line of its output without its end; empty when there is none any more.
    std::string nextLine();
    /// All the rest of its output.
    std::string restOfOutput();
    /// The port of a line "listening on http://127.0.0.1:PORT".
    static int portIn(const std::string& line);

    void signal(int number) const;
    /// Waits for its end: its exit status, or minus the signal that killed it.
    int wait();

private:
    pid_t process_ = -1;
    // Standard output and standard error, together.
    int output_ = -1;
};

}  // namespace vorlane::service
