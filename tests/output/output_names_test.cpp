#include "output/output_names.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

namespace lumiquilt {
namespace {

// Save As pins a picture's and the montage's plain captions; these are the odd ones.
TEST(ProposedSaveName, FromTheCaption) {
    const struct {
        const char* caption;
        const char* suffix;
        const char* expected;
    } rows[] = {
        {"Montage Clearstack", " montage", "Montage Clearstack montage"},
        {"Image 1 -- /my.pics/a1.jpg", " copy", "/my copy"},  // stops at the folder's dot
        {"Image 1 -- a -- b.jpg", " copy", "a -- b copy"},    // behind the first " -- "
    };
    for (const auto& row : rows) {
        EXPECT_EQ(proposedSaveName(row.caption, row.suffix), row.expected) << row.caption;
    }
}

// Save As pins the usual names; these are the odd ones.
TEST(SaveRoadFor, LastThreeLettersAlone) {
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
