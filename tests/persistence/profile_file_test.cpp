#include "persistence/profile_file.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "core/runtime_error.h"
#include "support/persistence_files.h"
#include "support/series_error_of.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;
using testing::errorOf;

class ProfileFileTest : public testing::ScratchFolderTest {
  protected:
    void SetUp() override {
        ScratchFolderTest::SetUp();
        m_path = path("Lumiquilt.ini");
    }
    void put(const std::string& content) { testing::putFile(m_path, content); }
    std::string content() const { return testing::fileBytes(m_path); }
    std::string read(const std::string& key) const {
        return readProfileString(m_path, "preferences", key, "0");
    }

    std::string m_path;
};

TEST_F(ProfileFileTest, ReadsTheFirstKeyOfTheSectionCaseAndBlanksAsideCutAndTrimmed) {
    const auto data = [](const char* name) {
        return testing::fileBytes(std::string(LUMIQUILT_TEST_DATA) + "/settings/" + name);
    };
    const std::string blanks =
        "[other]\nIncrement=99\n  [ Preferences ]  \n  increment  =  20  \nfilename=/a/b1.jpg\n";
    const std::string garbage =
        std::string("garbage without equals\n\x01\x02\n[preferences\n[preferences]\n=novalue\n") +
        "Increment=3" + std::string(1, '\0') + "5\nrubbish\n\xff\xfe=\x80\nautoSmooth=1\n";
    const struct {
        std::string content;
        const char* key;
        std::string value;
    } rows[] = {
        {blanks, "Increment", "20"},
        {blanks, "FILENAME", "/a/b1.jpg"},
        {blanks, "Montage method", "0"},  // missing key gives the default
        {"[preferences]\nfilename=a=b\nfilename=second\n", "filename", "a=b"},
        {"[preferences]\nfilename=" + std::string(300, 'x') + "\n", "filename",
         std::string(254, 'x')},
        {garbage, "Increment", "3"},  // cut at the NUL
        {garbage, "autoSmooth", "1"},
        // Files a user or a crash may leave behind.
        {data("nul_bytes.ini"), "Increment", "2"},  // a NUL ends a value
        {data("nul_bytes.ini"), "Montage method", ""},
        {data("nul_bytes.ini"), "edgeFactor", "0"},  // "edge\0Factor" is another key
        {data("nul_bytes.ini"), "rightmouse", "1"},
        {data("garbage.ini"), "Increment", "0"},
        {data("no_section.ini"), "Increment", "0"},
        {data("cr_only.ini"), "Increment", "0"},  // a lone CR ends no line
        {data("cr_only.ini"), "rightmouse", "0"},
        {data("lf_only.ini"), "Increment", "20"},
        {data("lf_only.ini"), "rightmouse", "1"},
        // The first of a repeated key counts, in any repeat of the section.
        {data("repeated_key.ini"), "Increment", "20"},
        {data("repeated_key.ini"), "rightmouse", "1"},
    };
    for (const auto& row : rows) {
        put(row.content);
        EXPECT_EQ(read(row.key), row.value) << row.content;
    }
}

TEST_F(ProfileFileTest, MissingFileOrAPipeInItsPlaceReadsTheDefault) {
    EXPECT_EQ(read("Increment"), "0");
    ASSERT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
    EXPECT_EQ(read("Increment"), "0");
}

TEST_F(ProfileFileTest, WriteReplacesInPlaceOrAddsTheKeyOrTheSectionOrTheFile) {
    const struct {
        const char* before;  // nullptr: no file
        const char* section;
        const char* key;
        const char* value;
        const char* after;
    } rows[] = {
        {"; my notes\r\n[preferences]\r\nIncrement = 20\r\n  odd line\r\nfilename=/x1.jpg\r\n",
         "preferences", "increment", "30",
         "; my notes\r\n[preferences]\r\nincrement=30\r\n  odd line\r\nfilename=/x1.jpg\r\n"},
        {"[preferences]\nIncrement=20\n\n[other]\nx=1\n", "preferences", "filename", "/a1.jpg",
         "[preferences]\nIncrement=20\nfilename=/a1.jpg\n\n[other]\nx=1\n"},
        {"[other]\nx=1", "preferences", "Increment", "20",
         "[other]\nx=1\n[preferences]\nIncrement=20\n"},
        {nullptr, "preferences", "Increment", "20", "[preferences]\nIncrement=20\n"},
        // A repeated key is rewritten at its first place only.
        {"[preferences]\nIncrement=20\nIncrement=30\n", "preferences", "Increment", "25",
         "[preferences]\nIncrement=25\nIncrement=30\n"},
    };
    for (const auto& row : rows) {
        fs::remove(m_path);
        if (row.before) {
            put(row.before);
        }
        writeProfileString(m_path, row.section, row.key, row.value);
        EXPECT_EQ(content(), row.after);
        EXPECT_EQ(readProfileString(m_path, row.section, row.key, "0"), row.value) << row.after;
    }
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

TEST_F(ProfileFileTest, TenMegabyteLinesAreReadAndWrittenAround) {
    const std::string big(10 * 1024 * 1024, 'x');
    const std::string head = "[preferences]\nfilename=" + big + "\n" + big + "\n" + big + "=1\n";
    put(head + "Increment=20\n");
    EXPECT_EQ(read("Increment"), "20");
    writeProfileString(m_path, "preferences", "Increment", "30");
    EXPECT_TRUE(content() == head + "Increment=30\n");
}

TEST_F(ProfileFileTest, ReadOnlyFileIsRefusedAndKeptWhole) {
    put("[preferences]\nIncrement=20\n");
    fs::permissions(m_path, fs::perms::owner_read, fs::perm_options::replace);
    EXPECT_EQ(errorOf([&] { writeProfileString(m_path, "preferences", "Increment", "30"); }),
              kPermissionDenied);
    EXPECT_EQ(content(), "[preferences]\nIncrement=20\n");
}

}  // namespace
}  // namespace lumiquilt
