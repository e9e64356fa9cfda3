#include "series/series_name.h"

#include <gtest/gtest.h>

#include <map>

#include "core/runtime_error.h"

namespace lumiquilt {
namespace {

TEST(CompleteSeriesName, AddsFolderAndExtension) {
    const struct {
        const char* text;
        const char* expected;
    } rows[] = {
        {"scene1", "/app/scene1.bmp"},
        {"scene1.bmp", "/app/scene1.bmp"},
        {"/pics/scene1", "/pics/scene1.bmp"},
        {"/pics/scene1.jpg", "/pics/scene1.jpg"},
        {"sub/scene1.gif", "/app/sub/scene1.gif"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(completeSeriesName(row.text, "/app/"), row.expected) << row.text;
    }
    // A dot in the program's folder is the first dot of a bare name.
    EXPECT_EQ(completeSeriesName("scene1", "/my.app/"), "/my.app/scene1");
}

TEST(HasDigitBeforeDot, LooksAtTheFirstDotOfTheWholeText) {
    EXPECT_TRUE(hasDigitBeforeDot("/pics/scene1.bmp"));
    EXPECT_FALSE(hasDigitBeforeDot("/my.pics/scene1.bmp"));  // first dot after "my"
    EXPECT_TRUE(hasDigitBeforeDot("/v2.1/scene1.bmp"));      // passes with the folder's 2
    EXPECT_FALSE(hasDigitBeforeDot("/pics/scene1a.bmp"));
    EXPECT_FALSE(hasDigitBeforeDot("/pics/scene"));
    EXPECT_FALSE(hasDigitBeforeDot(".bmp"));
}

struct PatternRow {
    const char* name;
    const char* first;
    std::vector<const char*> members;  // images 1, 2, ...
    int width;
    int seriesBase;
};

TEST(FindDigits, BuildsMemberNames) {
    const PatternRow rows[] = {
        {"plain", "/p/scene1.bmp", {"/p/scene1.bmp", "/p/scene2.bmp"}, 1, 0},
        {"width one takes no fill at ten",
         "/p/scene8.bmp",
         {"/p/scene8.bmp", "/p/scene9.bmp", "/p/scene10.bmp"},
         1,
         7},
        {"leading zero keeps width two",
         "/p/scene08.bmp",
         {"/p/scene08.bmp", "/p/scene09.bmp", "/p/scene10.bmp"},
         2,
         7},
        {"099 to 100", "/p/scene099.bmp", {"/p/scene099.bmp", "/p/scene100.bmp"}, 3, 98},
        {"zero gives base -1", "/p/scene0.bmp", {"/p/scene0.bmp", "/p/scene1.bmp"}, 1, -1},
        {"all digits stop at the slash", "/p/5.bmp", {"/p/5.bmp", "/p/6.bmp"}, 1, 4},
        {"folder digits count", "/v2.1/scene1.bmp", {"/v2.1/scene1.bmp", "/v3.1/scene1.bmp"}, 1, 1},
        {"third file starts the series", "/p/scene3.jpg", {"/p/scene3.jpg", "/p/scene4.jpg"}, 1, 2},
        {"suffix keeps everything after the dot",
         "/p/a1.tar.bmp",
         {"/p/a1.tar.bmp", "/p/a2.tar.bmp"},
         1,
         0},
    };
    for (const auto& row : rows) {
        const SeriesPattern p = findDigits(row.first);
        EXPECT_EQ(p.width, row.width) << row.name;
        EXPECT_EQ(p.seriesBase, row.seriesBase) << row.name;
        for (size_t k = 0; k < row.members.size(); ++k) {
            EXPECT_EQ(memberName(p, static_cast<int>(k) + 1), row.members[k]) << row.name;
        }
    }
}

TEST(FindDigits, RefusesAFirstNumberSixteenBitsCannotHold) {
    EXPECT_EQ(findDigits("/p/a32767.bmp").seriesBase, 32766);
    for (const char* name : {"/p/a32768.bmp", "/p/a99999.bmp", "/p/a123456789012345678901.bmp"}) {
        try {
            findDigits(name);
            ADD_FAILURE() << name;
        } catch (const RuntimeError& e) {
            EXPECT_EQ(e.number(), 6);
        }
    }
    // Counting past 32767 is an overflow, which ends the series.
    const SeriesPattern p = findDigits("/p/a32767.bmp");
    EXPECT_THROW(memberName(p, 2), RuntimeError);
}

// A fake disk for the loading loop: names that load, and names that are no picture.
struct FakeDisk {
    std::map<std::string, int> files;  // name -> 0 ok, 481 invalid
    std::vector<std::string> loaded;
    MemberLoader loader() {
        return [this](int k, const std::string& name) {
            auto it = files.find(name);
            if (it == files.end()) {
                throw RuntimeError(53);
            }
            if (it->second != 0) {
                throw RuntimeError(it->second);
            }
            EXPECT_EQ(k, static_cast<int>(loaded.size()) + 1);
            loaded.push_back(name);
        };
    }
};

TEST(LoadSeriesLoop, EndsAtTheFirstGap) {
    FakeDisk disk;
    disk.files = {{"/p/s1.bmp", 0}, {"/p/s2.bmp", 0}, {"/p/s4.bmp", 0}};
    std::string current;
    int16_t count = 99;
    const auto r = loadSeriesLoop(findDigits("/p/s1.bmp"), disk.loader(), count, current);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(r.end, SeriesEnd::gap);
    EXPECT_EQ(current, "/p/s3.bmp");
}

TEST(LoadSeriesLoop, OneFileIsASeriesOfOne) {
    FakeDisk disk;
    disk.files = {{"/p/s1.bmp", 0}};
    std::string current;
    int16_t count = 0;
    loadSeriesLoop(findDigits("/p/s1.bmp"), disk.loader(), count, current);
    EXPECT_EQ(count, 1);
}

TEST(LoadSeriesLoop, InvalidPictureIsToldApart) {
    FakeDisk disk;
    disk.files = {{"/p/s1.bmp", 0}, {"/p/s2.bmp", 481}, {"/p/s3.bmp", 0}};
    std::string current;
    int16_t count = 0;
    const auto r = loadSeriesLoop(findDigits("/p/s1.bmp"), disk.loader(), count, current);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(r.end, SeriesEnd::invalidPicture);
    EXPECT_EQ(r.errorNumber, 481);
}

TEST(LoadSeriesLoop, StopsAtThirtyPictures) {
    FakeDisk disk;
    for (int i = 1; i <= 40; ++i) {
        disk.files["/p/s" + std::to_string(i) + ".bmp"] = 0;
    }
    std::string current;
    int16_t count = 0;
    const auto r = loadSeriesLoop(findDigits("/p/s1.bmp"), disk.loader(), count, current);
    EXPECT_EQ(count, 30);
    EXPECT_EQ(r.end, SeriesEnd::limit);
    EXPECT_EQ(disk.loaded.size(), 30u);
    EXPECT_EQ(disk.loaded.back(), "/p/s30.bmp");
}

TEST(SeriesMessages, ExactTexts) {
    EXPECT_EQ(tooManyPicturesMessage(),
              "I can only cope with  30 pictures, so I will use the first ones.");
    EXPECT_EQ(noDigitMessageLoad(),
              "You must have a number as the last letter in the file name,  eg c:\\myfile1.bmp, or "
              "c:\\myotherfile6");
    EXPECT_EQ(noDigitMessageCreateImage(),
              "You must have a number as the last letter in the file name,  eg "
              "c:\\thisdirectory\\myfile1.bmp, or c:\\myotherfile6");
}

}  // namespace
}  // namespace lumiquilt
