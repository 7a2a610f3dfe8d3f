#include <fstream>

#include "Tests/Simulator/PhoneProgramTest.h"

namespace vorlane {

namespace {

class PhoneProgramOptionsTest : public PhoneProgramTest {
protected:
    std::string file(const std::string& name, const std::string& text) const {
        std::ofstream(path(name)) << text;
        return path(name);
    }

    /// Runs the program with these options and an empty input. Returns its exit status and output.
    std::pair<int, std::string> run(const std::string& options) const {
        const auto program = std::string(VORLANE_PHONE) + " --data-dir " + path("other") + " " + options;
        support::ChildProcess process({"/bin/sh", "-c", "exec " + program + " 2>&1"});
        process.closeInput();
        std::string text;
        while (const auto line = process.readLine()) text += *line + "\n";
        return {process.wait(), text};
    }

    void expectRefused(const std::string& options) const {
        const auto [status, text] = run(options);
        EXPECT_EQ(status, 2) << options;
        EXPECT_TRUE(text.starts_with("vorlane-phone: ")) << text;
        EXPECT_NE(text.find("\nusage: vorlane-phone --data-dir DIR"), std::string::npos) << text;
        EXPECT_FALSE(std::filesystem::exists(path("other/VLLibSettings.plist")));
    }
};

TEST_F(PhoneProgramOptionsTest, UnusableOptionsAreRefusedWithTheUsage) {
    expectRefused("--clock");
    expectRefused("--clock virtual=nan");
    expectRefused("--clock virtual=inf");
    expectRefused("--clock virtual=");
    expectRefused("--clock 5");
    expectRefused("--os-version twelve");
    expectRefused("--os-version inf");
    expectRefused("--os-version ''");
    expectRefused("--log-level -1");
    expectRefused("--log-level 1.5");
    expectRefused("--service ''");
    expectRefused("--service 127.0.0.1:1");
    expectRefused("stray");
    expectRefused("-h");
}

TEST_F(PhoneProgramOptionsTest, FilesMustContainOneObject) {
    for (const auto* text : {"", "[]", "{", "{}{}", "null"}) {
        expectRefused("--urls " + file("file", text));
        expectRefused("--info " + file("file", text));
    }
    expectRefused("--info " + path(""));
    expectRefused("--urls " + path("missing"));
}

TEST_F(PhoneProgramOptionsTest, EndpointsMustBeKnownAndAbsolute) {
    expectRefused("--urls " + file("urls", R"({"oddUrl":"http://h/"})"));
    expectRefused("--urls " + file("urls", R"({"mdnUrl":"relative"})"));
    expectRefused("--urls " + file("urls", R"({"mdnUrl":5})"));
}

TEST_F(PhoneProgramOptionsTest, ServiceAndUrlsExcludeEachOther) {
    expectRefused("--service http://h --urls " + file("urls", R"({"mdnUrl":"http://h/"})"));
}

TEST_F(PhoneProgramOptionsTest, HelpPrintsOnlyTheUsage) {
    for (const auto* options : {"--help", "--clock virtual --help", "--unknown --help"}) {
        const auto [status, text] = run(options);
        EXPECT_EQ(status, 0);
        EXPECT_TRUE(text.starts_with("usage: vorlane-phone --data-dir DIR")) << text;
        for (const auto* option : {"--data-dir", "--service", "--urls", "--info", "--os-version", "--clock",
                                   "--log-level", "--resources", "--help"})
            EXPECT_NE(text.find(std::string("\n  ") + option), std::string::npos) << option;
    }
    EXPECT_FALSE(std::filesystem::exists(path("other")));
}

TEST_F(PhoneProgramOptionsTest, EmptyInputEndsItWithoutOutput) {
    EXPECT_EQ(run(""), (std::pair<int, std::string>{0, ""}));
    EXPECT_EQ(run("--os-version 9.3 --clock virtual --log-level 0"), (std::pair<int, std::string>{0, ""}));
}

TEST_F(PhoneProgramOptionsTest, EndpointsFromAFileAreUsed) {
    const auto urls = file("urls", R"({"mdnUrl":"http://127.0.0.1:9/m"})");
    phone = std::make_unique<support::PhoneProcess>(
        VORLANE_PHONE, std::vector<std::string>{"--data-dir", path("phone"), "--urls", urls});
    EXPECT_EQ(query("urls")["mdnUrl"], Value("http://127.0.0.1:9/m"));
    EXPECT_TRUE(query("urls")["inboxUrl"].get<std::string>().starts_with("https://"));
}

TEST_F(PhoneProgramOptionsTest, TimeZoneIsTheProcesss) {
    const auto program = std::string(VORLANE_PHONE) + " --data-dir " + path("zone") + " --clock virtual";
    support::ChildProcess process({"/bin/sh", "-c", "TZ=XYZ-5:30 exec " + program});
    process.writeLine(R"({"do":"launch","preset":"development","options":{"appKey":")" + appKey() +
                      R"("},"state":"active"})");
    process.closeInput();
    std::string text;
    while (const auto line = process.readLine()) text += *line + "\n";
    EXPECT_EQ(process.wait(), 0);
    EXPECT_NE(text.find("+330"), std::string::npos);
}

}  // namespace

}  // namespace vorlane
