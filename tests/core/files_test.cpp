#include "core/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "core/text.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;

TEST(FileExists, FilesYesFoldersAndMissingNo) {
    const fs::path dir = fs::temp_directory_path() / "lumiquilt_files_test";
    fs::create_directories(dir / "scene1.jpg");  // a folder named like a picture
    std::ofstream(dir / "real1.jpg") << "x";
    EXPECT_TRUE(fileExists((dir / "real1.jpg").string()));
    EXPECT_FALSE(fileExists((dir / "scene1.jpg").string()));
    EXPECT_FALSE(fileExists((dir / "missing1.jpg").string()));
    EXPECT_FALSE(fileExists(""));
    EXPECT_FALSE(fileExists(std::string(300, 'a')));
    fs::remove_all(dir);
}

TEST(ExpandFileName, GivesTheFullForm) {
    EXPECT_EQ(expandFileName(""), "");
    EXPECT_EQ(expandFileName("/tmp/../tmp/./x1.jpg"), "/tmp/x1.jpg");
    EXPECT_TRUE(isAbsoluteName(expandFileName("relative1.jpg")));
}

TEST(Text, LowerCaseIsUnicodeAware) {
    EXPECT_EQ(toLowerUtf8("/PICS/Scene1.JPG"), "/pics/scene1.jpg");
    EXPECT_EQ(toLowerUtf8("/Bilder/ÄPFEL1.jpg"), "/bilder/äpfel1.jpg");
    EXPECT_EQ(toLowerUtf8("\xff\xfe"), "\xff\xfe");
    EXPECT_EQ(cutUtf8("aä", 2), "a");
    EXPECT_EQ(trimmed("  a b \t"), "a b");
}

}  // namespace
}  // namespace lumiquilt
