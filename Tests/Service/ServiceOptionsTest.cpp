#include "Simulator/Service/ServiceOptions.h"

#include <gtest/gtest.h>

#include "Simulator/Service/Http/ServiceError.h"

namespace vorlane::service {
namespace {

TEST(ServiceOptionsTest, DefaultsToAFreeLoopbackPortAndMemory) {
    const auto options = ServiceOptions::fromArguments({});
    EXPECT_EQ(options.host, "127.0.0.1");
    EXPECT_EQ(options.port, 0);
    EXPECT_EQ(options.database, ":memory:");
    EXPECT_FALSE(options.requestLog);
    EXPECT_FALSE(options.wantsHelp);
}

TEST(ServiceOptionsTest, ValuesFollowABlankOrAnEqualsSign) {
    for (const auto& arguments :
         {std::vector<std::string>{"--port", "8780", "--host", "::1", "--database", "a=b", "--log-requests", "-"},
          std::vector<std::string>{"--port=8780", "--host=::1", "--database=a=b", "--log-requests=-"}}) {
        const auto options = ServiceOptions::fromArguments(arguments);
        EXPECT_EQ(options.port, 8780);
        EXPECT_EQ(options.host, "::1");
        EXPECT_EQ(options.database, "a=b");
        EXPECT_EQ(options.requestLog, "-");
    }
}

TEST(ServiceOptionsTest, HelpIsOneWord) {
    EXPECT_TRUE(ServiceOptions::fromArguments({"--help"}).wantsHelp);
    for (const char* option : {"--port", "--host", "--database", "--log-requests", "--help"})
        EXPECT_NE(ServiceOptions::usage().find(option), std::string::npos);
}

TEST(ServiceOptionsTest, InvalidArgumentsAreErrors) {
    for (const auto& arguments : {std::vector<std::string>{"--port"}, std::vector<std::string>{"--port", "x"},
                                  std::vector<std::string>{"--port", "65536"}, std::vector<std::string>{"--port", "-1"},
                                  std::vector<std::string>{"--port="}, std::vector<std::string>{"--prt", "1"},
                                  std::vector<std::string>{"8780"}})
        EXPECT_THROW(ServiceOptions::fromArguments(arguments), ServiceError);
}

}  // namespace
}  // namespace vorlane::service
