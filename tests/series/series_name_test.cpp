#include "series/series_name.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace lumiquilt
