#include "engine/properties_report.h"

#include <gtest/gtest.h>

namespace lumiquilt {
namespace {

ReportInputs baseInputs() {
    ReportInputs in;
    in.firstFileName = "/pics/scene1.jpg";
    in.imageCount = 3;
    in.methodChecked[2] = true;
    in.incrementText = "20";
    return in;
}

// With no caption the report ends in two line ends.
TEST(PropertiesReport, NoImageIgnored) {
    EXPECT_EQ(setPropertiesString(baseInputs()),
              "\r\n"
              "  First file name =/pics/scene1.jpg\r\n"
              "  Number of files found = 3\r\n"
              "  Montage method used =2 (Average Color Difference)\r\n"
              "  Increment size =20\r\n"
              "  Smoothing =no \r\n"
              "  Montage made from dominant image numbers:\r\n"
              "\r\n");
}

TEST(PropertiesReport, IgnoredImagesSmoothingAndFractionalIncrement) {
    ReportInputs in = baseInputs();
    in.ignored[1] = in.ignored[3] = true;
    in.autoSmooth = 1;
    in.incrementText = "2.5";
    const std::string text = setPropertiesString(in);
    EXPECT_NE(text.find("  Number of files found = 3\r\n  Ignore image number =2, 4\r\n  Montage"),
              std::string::npos);
    EXPECT_NE(text.find("  Increment size =2.5\r\n  Smoothing =yes\r\n"), std::string::npos);
}

TEST(PropertiesReport, FileNameHoldingTheIgnoreHead) {
    ReportInputs in = baseInputs();
    in.firstFileName = "/x/Ignore image number1.bmp";
    in.ignored[0] = true;
    EXPECT_NE(setPropertiesString(in).find("number1.bmp\r\n  Number of files found = 3\r\n, 1\r\n"),
              std::string::npos);
    // The line end after the list stands even when no entry is checked.
    in.ignored[0] = false;
    EXPECT_NE(setPropertiesString(in).find("found = 3\r\n\r\n  Montage method"), std::string::npos);
}

TEST(PropertiesReport, OffsetLines) {
    ReportInputs in = baseInputs();
    in.addOffsets = true;
    in.offsetsMin = true;
    in.imageOffsets[0][1] = 12;
    in.imageOffsets[1][1] = -4;
    in.ignored[1] = true;
    const std::string text = setPropertiesString(in);
    EXPECT_NE(text.find("  Offset display method =Minimum\r\n"
                        "  Image 1 offset X =12\r\n  Image 1 offset Y =-4\r\n"
                        "  Image 3 offset X =0\r\n  Image 3 offset Y =0\r\n"),
              std::string::npos);
    EXPECT_EQ(text.find("Image 2 offset"), std::string::npos);
    // Offsets on with no display entry: the offsets, but no method.
    in.offsetsMin = false;
    const std::string noEntry = setPropertiesString(in);
    EXPECT_EQ(noEntry.find("Offset display method"), std::string::npos);
    EXPECT_NE(noEntry.find("Smoothing =no \r\n  Image 1 offset X =12\r\n"), std::string::npos)
        << noEntry;
    // Offsets off: no offset lines, whatever the display entries say.
    in.offsetsMin = true;
    in.addOffsets = false;
    EXPECT_EQ(setPropertiesString(in).find("Offset"), std::string::npos);
}

TEST(PropertiesReport, EndsWithTheUsedCaption) {
    ReportInputs in = baseInputs();
    in.usedCaption = "1 2\r\n3 1";
    const std::string text = setPropertiesString(in);
    EXPECT_EQ(text.substr(text.size() - 12), "\r\n1 2\r\n3 1\r\n");
}

}  // namespace
}  // namespace lumiquilt
