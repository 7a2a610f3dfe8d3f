#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

namespace {

namespace files = std::filesystem;

/// A fixture with a read-only data folder. As root, who may write everywhere, the phone runs as nobody and owns the
/// folder.
class ReadOnlyFolderTest : public EndToEndTest {
protected:
    static constexpr uid_t kNobody = 65534;

    ReadOnlyFolderTest() {
        files::create_directory(path("phone"));
        // The build folder may be private.
        files::copy_file(VORLANE_PHONE, program());
        files::permissions(path(""), files::perms(0755));
    }
    ~ReadOnlyFolderTest() override { files::permissions(path("phone"), files::perms(0755)); }

    std::string program() const { return path("vorlane-phone"); }
    std::string settingsFile() const { return path("phone") + "/VLLibSettings.plist"; }

    void startReadOnlyPhone() {
        if (geteuid() == 0) giveFolderToNobody();
        files::permissions(path("phone"), files::perms(0555));
        std::vector<std::string> arguments{"--data-dir",     path("phone"), "--service",
                                           service.origin(), "--clock",     "virtual"};
        if (geteuid() != 0) {
            phone = std::make_unique<support::PhoneProcess>(program(), arguments);
            return;
        }
        arguments.insert(arguments.begin(), {fmt::format("--reuid={}", kNobody), fmt::format("--regid={}", kNobody),
                                             "--clear-groups", program()});
        phone = std::make_unique<support::PhoneProcess>("setpriv", arguments);
    }

    void giveFolderToNobody() const {
        ASSERT_EQ(chown(path("phone").c_str(), kNobody, kNobody), 0);
        for (const auto& entry : files::recursive_directory_iterator(path("phone")))
            ASSERT_EQ(chown(entry.path().c_str(), kNobody, kNobody), 0);
    }

    static std::string textOf(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
};

TEST_F(ReadOnlyFolderTest, LaunchWorksInMemory) {
    startReadOnlyPhone();
    launch();
    state("active");
    phone->call("setTrackingId:", {"somebody"});
    phone->call("registerEventWithType:label:", {"visit", "shop"});
    EXPECT_EQ(lastPayload("registerEvent")["tracking_id"], "somebody");
    EXPECT_EQ(phone->call("trackingId"), "somebody");
    EXPECT_EQ(phone->quit(), 0);
    EXPECT_TRUE(files::is_empty(path("phone")));
}

TEST_F(ReadOnlyFolderTest, ReadsAndKeepsEarlierFiles) {
    startPhone();
    launch();
    phone->call("setTrackingId:", {"before"});
    phone->settle();
    EXPECT_EQ(phone->quit(), 0);
    for (const auto& entry : files::directory_iterator(path("phone"))) {
        if (entry.is_regular_file()) files::permissions(entry, files::perms(0444));
    }
    const auto stored = textOf(settingsFile());

    startReadOnlyPhone();
    launch();
    EXPECT_EQ(phone->call("trackingId"), "before");
    phone->call("setTrackingId:", {"after"});
    EXPECT_EQ(phone->call("trackingId"), "after");
    EXPECT_EQ(phone->quit(), 0);
    EXPECT_EQ(textOf(settingsFile()), stored);
}

}  // namespace

}  // namespace vorlane
