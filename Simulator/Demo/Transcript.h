#pragma once

#include <string>
#include <vector>

namespace vorlane::demo {

/// Prints the phone's actions on the left and the service's requests on the right, 120 columns wide.
class Transcript {
public:
    /// Prints a heading across both columns.
    void chapter(const std::string& title);
    /// Prints two lists beside each other.
    void step(const std::vector<std::string>& phone, const std::vector<std::string>& service);
    /// Prints a line across both columns.
    void line(const std::string& text);
};

}  // namespace vorlane::demo
