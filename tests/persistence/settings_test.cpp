#include "persistence/settings.h"

#include <gtest/gtest.h>

#include "support/persistence_files.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;

class SettingsTest : public testing::ScratchFolderTest {
  protected:
    void SetUp() override {
        ScratchFolderTest::SetUp();
        m_path = path("Lumiquilt.ini");
    }
    std::string m_path;
};

TEST_F(SettingsTest, RecentListMovesItemsUpWithoutDoubling) {
    Settings settings(m_path);
    RecentFiles recent;
    recent.load(settings);
    for (int i = 0; i < 13; ++i) {
        recent.add("/pics/Scene" + std::to_string(i) + "1.jpg", settings);
    }
    // The thirteenth item pushed the first off the end, in the menu and the file.
    EXPECT_EQ(recent.at(0), "/pics/Scene121.jpg");
    EXPECT_EQ(recent.at(11), "/pics/Scene11.jpg");
    EXPECT_EQ(settings.readKey("recent file 11"), "/pics/Scene11.jpg");

    // The same name in other case moves up and takes the new spelling.
    recent.add("/PICS/scene51.jpg", settings);
    EXPECT_EQ(recent.at(0), "/PICS/scene51.jpg");
    EXPECT_EQ(recent.at(7), "/pics/Scene61.jpg");
    EXPECT_EQ(recent.at(8), "/pics/Scene41.jpg");
    int count = 0;
    for (const auto& item : recent.items()) {
        count += item == "/PICS/scene51.jpg" || item == "/pics/Scene51.jpg";
    }
    EXPECT_EQ(count, 1);

    RecentFiles reread;
    reread.load(settings);
    EXPECT_EQ(reread.items(), recent.items());
}

TEST_F(SettingsTest, ForgetEmptiesEntriesInPlace) {
    testing::putFile(m_path,
                     "[preferences]\nrecent file 0=/a/x1.jpg\nrecent file 1=0\n"
                     "recent file 2=/a/gone1.jpg\nrecent file 3=/a/y1.jpg\n");
    Settings settings(m_path);
    RecentFiles recent;
    recent.load(settings);
    EXPECT_EQ(recent.at(1), "");  // "0" is an empty entry
    EXPECT_TRUE(recent.forget("/A/Gone1.jpg", settings));
    EXPECT_EQ(recent.at(2), "");
    EXPECT_EQ(recent.at(3), "/a/y1.jpg");  // nothing moves up
    EXPECT_EQ(settings.readKey("recent file 2"), "");
    EXPECT_FALSE(recent.forget("/a/other1.jpg", settings));
}

TEST(SettingsPath, EnvironmentNamesTheFile) {
    ::setenv("LUMIQUILT_INI", "/tmp/somewhere/x.ini", 1);
    EXPECT_EQ(settingsFilePath("/usr/bin/"), "/tmp/somewhere/x.ini");
    ::unsetenv("LUMIQUILT_INI");
    EXPECT_EQ(settingsFilePath(fs::temp_directory_path().string() + "/"),
              fs::temp_directory_path().string() + "/Lumiquilt.ini");
}

}  // namespace
}  // namespace lumiquilt
