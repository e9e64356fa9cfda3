#include "persistence/profile_file.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/runtime_error.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;

class ProfileFileTest : public ::testing::Test {
  protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() /
                ("lumiquilt_profile_" + std::to_string(::getpid()) + "_" +
                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir);
        m_path = (m_dir / "Lumiquilt.ini").string();
    }
    void TearDown() override {
        fs::permissions(m_dir, fs::perms::owner_all, fs::perm_options::add);
        fs::remove_all(m_dir);
    }
    void put(const std::string& content) { std::ofstream(m_path, std::ios::binary) << content; }
    std::string content() const {
        std::ifstream in(m_path, std::ios::binary);
        std::ostringstream s;
        s << in.rdbuf();
        return s.str();
    }
    std::string read(const std::string& key) const {
        return readProfileString(m_path, "preferences", key, "0");
    }

    fs::path m_dir;
    std::string m_path;
};

TEST_F(ProfileFileTest, ReadsMatchIgnoringCaseAndBlanks) {
    put("[other]\nIncrement=99\n  [ Preferences ]  \n  increment  =  20  \nfilename=/a/b1.jpg\n");
    EXPECT_EQ(read("Increment"), "20");
    EXPECT_EQ(read("FILENAME"), "/a/b1.jpg");
    EXPECT_EQ(read("Montage method"), "0");  // missing key gives the default
}

TEST_F(ProfileFileTest, FirstEqualsSignSplitsAndFirstKeyWins) {
    put("[preferences]\nfilename=a=b\nfilename=second\n");
    EXPECT_EQ(read("filename"), "a=b");
}

TEST_F(ProfileFileTest, MissingFileGivesDefault) {
    EXPECT_EQ(readProfileString(m_path + ".none", "preferences", "Increment", "0"), "0");
}

TEST_F(ProfileFileTest, ValuesAreCutAt254Characters) {
    put("[preferences]\nfilename=" + std::string(300, 'x') + "\n");
    EXPECT_EQ(read("filename"), std::string(254, 'x'));
}

TEST_F(ProfileFileTest, GarbageLinesAndNulBytesDoNotDisturb) {
    put(std::string("garbage without equals\n\x01\x02\n[preferences\n[preferences]\n=novalue\n") +
        "Increment=3" + std::string(1, '\0') + "5\nrubbish\n\xff\xfe=\x80\nautoSmooth=1\n");
    EXPECT_EQ(read("Increment"), "3");
    EXPECT_EQ(read("autoSmooth"), "1");
}

TEST_F(ProfileFileTest, WriteReplacesInPlaceAndKeepsOtherLines) {
    put("; my notes\r\n[preferences]\r\nIncrement = 20\r\n  odd line\r\nfilename=/x1.jpg\r\n");
    writeProfileString(m_path, "preferences", "increment", "30");
    EXPECT_EQ(content(),
              "; my notes\r\n[preferences]\r\nincrement=30\r\n  odd line\r\nfilename=/x1.jpg\r\n");
}

TEST_F(ProfileFileTest, WriteAddsKeyAtEndOfItsSection) {
    put("[preferences]\nIncrement=20\n\n[other]\nx=1\n");
    writeProfileString(m_path, "preferences", "filename", "/a1.jpg");
    EXPECT_EQ(content(), "[preferences]\nIncrement=20\nfilename=/a1.jpg\n\n[other]\nx=1\n");
}

TEST_F(ProfileFileTest, WriteAddsSectionAtEndOfFile) {
    put("[other]\nx=1");
    writeProfileString(m_path, "preferences", "Increment", "20");
    EXPECT_EQ(content(), "[other]\nx=1\n[preferences]\nIncrement=20\n");
}

// A last line cut after its carriage return reads as if the line feed were there;
// completing it must not turn the return into part of the value.
TEST_F(ProfileFileTest, LastLineEndingInALoneReturnKeepsItsValue) {
    for (const char* section : {"preferences", "other"}) {
        put("[preferences]\r\nfilename=/a1.jpg\r");
        ASSERT_EQ(read("filename"), "/a1.jpg");
        writeProfileString(m_path, section, "Increment", "20");
        EXPECT_EQ(read("filename"), "/a1.jpg") << section;
        const std::string kept = "[preferences]\r\nfilename=/a1.jpg\r\n";
        EXPECT_EQ(content().substr(0, kept.size()), kept) << section;
    }
}

TEST_F(ProfileFileTest, WriteCreatesAMissingFile) {
    writeProfileString(m_path, "preferences", "Increment", "20");
    EXPECT_EQ(content(), "[preferences]\nIncrement=20\n");
    EXPECT_EQ(read("Increment"), "20");
}

TEST_F(ProfileFileTest, ReadOnlyFileIsRefusedAndKeptWhole) {
    put("[preferences]\nIncrement=20\n");
    fs::permissions(m_path, fs::perms::owner_read, fs::perm_options::replace);
    EXPECT_THROW(writeProfileString(m_path, "preferences", "Increment", "30"), RuntimeError);
    EXPECT_EQ(content(), "[preferences]\nIncrement=20\n");
}

TEST_F(ProfileFileTest, UnwritableFolderFailsWithoutTouchingTheFile) {
    const std::string path = (m_dir / "missing-folder" / "Lumiquilt.ini").string();
    try {
        writeProfileString(path, "preferences", "Increment", "30");
        FAIL() << "no error";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), 76);
    }
    EXPECT_FALSE(fs::exists(path));
    // No temporary file is left behind after a failed write.
    for (const auto& entry : fs::directory_iterator(m_dir)) {
        EXPECT_EQ(entry.path().filename().string().find(".tmp-"), std::string::npos);
    }
}

}  // namespace
}  // namespace lumiquilt

#include "output/gif_encoder.h"
#include "support/full_disk.h"

namespace lumiquilt {
namespace {

TEST_F(ProfileFileTest, FullDiskLeavesTheOldFileWhole) {
    put("[preferences]\nIncrement=20\n");
    const int error = testing::withFullDisk(64, [this] {
        try {
            writeProfileString(m_path, "preferences", "filename", std::string(500, 'x'));
            return 0;
        } catch (const RuntimeError& e) {
            return e.number();
        }
    });
    EXPECT_EQ(error, 61);
    EXPECT_EQ(content(), "[preferences]\nIncrement=20\n");
    for (const auto& entry : fs::directory_iterator(m_dir)) {
        EXPECT_EQ(entry.path().filename(), "Lumiquilt.ini");
    }
}

TEST_F(ProfileFileTest, GifOnAFullDiskLeavesTheOldFileWhole) {
    const std::string target = (m_dir / "old.gif").string();
    std::ofstream(target) << "old picture";
    IndexedPicture picture;
    picture.width = 200;
    picture.height = 200;
    picture.indices.assign(40000, 7);
    const int error = testing::withFullDisk(2000, [&] {
        try {
            GIF gif;
            gif.SaveGIF(picture, target);
            return 0;
        } catch (const RuntimeError& e) {
            return e.number();
        }
    });
    EXPECT_EQ(error, 61);
    std::ifstream in(target);
    std::string text;
    std::getline(in, text);
    EXPECT_EQ(text, "old picture");
}

}  // namespace
}  // namespace lumiquilt

namespace lumiquilt {
namespace {

TEST_F(ProfileFileTest, APipeInThePlaceOfTheFileReadsTheDefault) {
    ASSERT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
    EXPECT_EQ(read("Increment"), "0");
}

}  // namespace
}  // namespace lumiquilt
