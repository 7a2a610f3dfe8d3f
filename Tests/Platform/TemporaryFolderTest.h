#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

namespace vorlane {

/// A scene with an empty folder of its own.
class TemporaryFolderTest : public ::testing::Test {
protected:
    TemporaryFolderTest() : folder_((std::filesystem::temp_directory_path() / "vorlane-test-XXXXXX").string()) {
        if (!mkdtemp(folder_.data())) ADD_FAILURE() << "no folder";
    }
    ~TemporaryFolderTest() override { std::filesystem::remove_all(folder_); }

    std::string path(const std::string& name) const { return folder_ + "/" + name; }

    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) found.push_back(entry.path().filename());
        return found;
    }

private:
    std::string folder_;
};

}  // namespace vorlane
