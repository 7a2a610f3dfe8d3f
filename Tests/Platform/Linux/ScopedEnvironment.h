#pragma once

#include <cstdlib>
#include <string>
#include <utility>

namespace vorlane {

/// Sets an environment variable of the process while it exists; an empty value unsets the variable.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, const std::string& value) : name_(std::move(name)) {
        if (const char* const before = std::getenv(name_.c_str())) before_ = before;
        set(value);
    }
    ~ScopedEnvironment() { set(before_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void set(const std::string& value) const {
        value.empty() ? unsetenv(name_.c_str()) : setenv(name_.c_str(), value.c_str(), 1);
    }

    const std::string name_;
    std::string before_;
};

}  // namespace vorlane
