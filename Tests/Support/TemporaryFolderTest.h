#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/TemporaryFolder.h"

namespace vorlane {

/// A fixture with an empty folder of its own.
class TemporaryFolderTest : public ::testing::Test {
protected:
    std::string path(const std::string& name) const { return folder_.path(name); }
    std::vector<std::string> names() const { return folder_.names(); }

private:
    const TemporaryFolder folder_;
};

}  // namespace vorlane
