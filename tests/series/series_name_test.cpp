#include "series/series_name.h"

#include <gtest/gtest.h>

#include <map>

#include "core/runtime_error.h"
#include "support/series_error_of.h"

namespace lumiquilt {
namespace {

using testing::errorOf;

TEST(CompleteSeriesName, AddsFolderAndExtension) {
    const struct {
        const char* text;
        const char* app;
        const char* expected;
    } rows[] = {
        {"scene1", "/app/", "/app/scene1.bmp"},
        {"scene1.bmp", "/app/", "/app/scene1.bmp"},
        {"/pics/scene1", "/app/", "/pics/scene1.bmp"},
        {"/pics/scene1.jpg", "/app/", "/pics/scene1.jpg"},
        {"sub/scene1.gif", "/app/", "/app/sub/scene1.gif"},
        // A dot in the program's folder is the first dot of a bare name.
        {"scene1", "/my.app/", "/my.app/scene1"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(completeSeriesName(row.text, row.app), row.expected) << row.text;
    }
}

TEST(HasDigitBeforeDot, LooksAtTheFirstDotOfTheWholeText) {
    EXPECT_TRUE(hasDigitBeforeDot("/pics/scene1.bmp"));
    EXPECT_FALSE(hasDigitBeforeDot("/my.pics/scene1.bmp"));  // first dot after "my"
    EXPECT_TRUE(hasDigitBeforeDot("/v2.1/scene1.bmp"));      // passes with the folder's 2
    EXPECT_FALSE(hasDigitBeforeDot("/pics/scene1a.bmp"));
    EXPECT_FALSE(hasDigitBeforeDot("/pics/scene"));
    EXPECT_FALSE(hasDigitBeforeDot(".bmp"));
}

TEST(FindDigits, BuildsMemberNames) {
    const struct {
        const char* name;
        const char* first;
        int width;
        int seriesBase;
        std::vector<const char*> members;  // images 2, 3, ...
    } rows[] = {
        {"plain", "/p/scene1.bmp", 1, 0, {"/p/scene2.bmp"}},
        {"width one: no fill at ten", "/p/scene8.bmp", 1, 7, {"/p/scene9.bmp", "/p/scene10.bmp"}},
        {"leading zero keeps width", "/p/scene08.bmp", 2, 7, {"/p/scene09.bmp", "/p/scene10.bmp"}},
        {"099 to 100", "/p/scene099.bmp", 3, 98, {"/p/scene100.bmp"}},
        {"zero gives base -1", "/p/scene0.bmp", 1, -1, {"/p/scene1.bmp"}},
        {"all digits stop at the slash", "/p/5.bmp", 1, 4, {"/p/6.bmp"}},
        {"folder digits count", "/v2.1/scene1.bmp", 1, 1, {"/v3.1/scene1.bmp"}},
        {"third file starts the series", "/p/scene3.jpg", 1, 2, {"/p/scene4.jpg"}},
        {"suffix keeps everything after the dot", "/p/a1.tar.bmp", 1, 0, {"/p/a2.tar.bmp"}},
        {"largest first number", "/p/a32767.bmp", 5, 32766, {}},
    };
    for (const auto& row : rows) {
        const SeriesPattern p = findDigits(row.first);
        EXPECT_EQ(p.width, row.width) << row.name;
        EXPECT_EQ(p.seriesBase, row.seriesBase) << row.name;
        EXPECT_EQ(memberName(p, 1), row.first) << row.name;
        for (size_t k = 0; k < row.members.size(); ++k) {
            EXPECT_EQ(memberName(p, static_cast<int>(k) + 2), row.members[k]) << row.name;
        }
    }
}

TEST(FindDigits, NumbersSixteenBitsCannotHoldAreAnOverflow) {
    for (const char* name : {"/p/a32768.bmp", "/p/a99999.bmp", "/p/a123456789012345678901.bmp"}) {
        EXPECT_EQ(errorOf([&] { findDigits(name); }), kOverflow) << name;
    }
    // Counting past 32767 ends the series the same way.
    EXPECT_EQ(errorOf([] { memberName(findDigits("/p/a32767.bmp"), 2); }), kOverflow);
}

TEST(LoadSeriesLoop, CountsUpToTheFirstMemberThatFails) {
    const struct {
        const char* name;
        int files;         // s1.bmp .. sN.bmp
        int missing, bad;  // a member that is not there, one that is no picture
        int count;
        SeriesEnd end;
        int errorNumber;
        const char* current;
    } rows[] = {
        {"ends at the first gap", 4, 3, 0, 2, SeriesEnd::gap, 53, "/p/s3.bmp"},
        {"one file is a series of one", 1, 0, 0, 1, SeriesEnd::gap, 53, "/p/s2.bmp"},
        {"invalid picture is told apart", 3, 0, 2, 1, SeriesEnd::invalidPicture, 481, "/p/s2.bmp"},
        {"stops at thirty pictures", 40, 0, 0, 30, SeriesEnd::limit, 0, "/p/s30.bmp"},
    };
    for (const auto& row : rows) {
        std::map<std::string, int> disk;  // name -> 0 loads, or the error it gives
        for (int k = 1; k <= row.files; ++k) {
            if (k != row.missing) {
                disk["/p/s" + std::to_string(k) + ".bmp"] = k == row.bad ? 481 : 0;
            }
        }
        std::vector<std::string> loaded;
        const MemberLoader load = [&](int k, const std::string& name) {
            const auto it = disk.find(name);
            if (it == disk.end() || it->second != 0) {
                throw RuntimeError(it == disk.end() ? 53 : it->second);
            }
            EXPECT_EQ(k, static_cast<int>(loaded.size()) + 1) << row.name;
            loaded.push_back(name);
        };
        std::string current;
        int16_t count = 99;
        const SeriesLoopResult r = loadSeriesLoop(findDigits("/p/s1.bmp"), load, count, current);
        EXPECT_EQ(count, row.count) << row.name;
        EXPECT_EQ(loaded.size(), static_cast<size_t>(row.count)) << row.name;
        EXPECT_EQ(r.end, row.end) << row.name;
        EXPECT_EQ(r.errorNumber, row.errorNumber) << row.name;
        EXPECT_EQ(current, row.current) << row.name;
    }
}

}  // namespace
}  // namespace lumiquilt
