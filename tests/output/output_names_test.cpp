#include "output/output_names.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

namespace lumiquilt {
namespace {

TEST(ProposedSaveName, FromTheCaption) {
    const struct {
        const char* caption;
        const char* suffix;
        const char* expected;
    } rows[] = {
        {"Image 3 -- /x/a3.bmp", " copy", "/x/a3 copy"},
        {"Montage in focus image from /p/scene1.jpg", " montage", "/p/scene1 montage"},
        {"Montage Clearstack", " montage", "Montage Clearstack montage"},
        {"Image 1 -- /my.pics/a1.jpg", " copy", "/my copy"},  // stops at the folder's dot
        {"Image 1 -- a -- b.jpg", " copy", "a -- b copy"},    // behind the first " -- "
    };
    for (const auto& row : rows) {
        EXPECT_EQ(proposedSaveName(row.caption, row.suffix), row.expected) << row.caption;
    }
}

TEST(SaveRoadFor, LastThreeLettersAlone) {
    EXPECT_EQ(saveRoadFor("/a/b.JPG"), SaveRoad::jpeg);
    EXPECT_EQ(saveRoadFor("/a/b.jpeg"), SaveRoad::bmp);  // "peg"
    EXPECT_EQ(saveRoadFor("/a/b.gif"), SaveRoad::gif);
    EXPECT_EQ(saveRoadFor("/a/b"), SaveRoad::bmp);
    EXPECT_EQ(saveRoadFor("/a/bgif"), SaveRoad::gif);
    EXPECT_EQ(saveRoadFor("jp"), SaveRoad::bmp);
}

TEST(PrivateTemporaryFolder, OnlyTheUsersOwn) {
    const std::string folder = privateTemporaryFolder();
    struct stat info {};
    ASSERT_EQ(::stat(folder.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);
    EXPECT_EQ(folder.back(), '/');
    EXPECT_EQ(privateTemporaryFolder(), folder);
}

}  // namespace
}  // namespace lumiquilt
