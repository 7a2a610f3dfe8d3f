#pragma once

#include <string>
#include <vector>

namespace vorlane::demo {

/// Prints what the phone did on the left and what the service received on the right, side by side in time. Plain text,
/// 120 columns.
class Transcript {
public:
    /// A heading across both columns.
    void chapter(const std::string& title);
    /// What happened on either side in one step; the two lists are printed beside each other.
    void step(const std::vector<std::string>& phone, const std::vector<std::string>& service);
    /// A line across both columns.
    void line(const std::string& text);
};

}  // namespace vorlane::demo
