#include "cli/cli_app.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/test_pictures.h"

namespace lumiquilt {
namespace {

using testing::TestFolder;

struct CliRun {
    int code;
    std::string out;
    std::string err;
};

CliRun cli(const std::vector<std::string>& args, const std::string& folder) {
    std::ostringstream out;
    std::ostringstream err;
    const int code = runCli(args, folder, out, err);
    return {code, out.str(), err.str()};
}

// A series s1.png .. sN.png of pattern pictures.
void makeSeries(const TestFolder& dir, int count, int width = 40, int height = 30) {
    for (int k = 1; k <= count; ++k) {
        testing::savePictureFile(testing::patternPicture(width, height, k),
                                 dir.path("s" + std::to_string(k) + ".png"));
    }
}

TEST(Cli, UsageErrorsExitTwo) {
    TestFolder dir;
    makeSeries(dir, 2);
    const std::vector<std::vector<std::string>> rows = {
        {},
        {"paint", "s1.png"},
        {"montage"},
        {"montage", "s1.png", "-m", "7"},
        {"montage", "s1.png", "-m", "x"},
        {"montage", "s1.png", "--ignore", "11"},
        {"montage", "s1.png", "--ignore", "1,,2"},
        {"montage", "s1.png", "-o", "out.tif"},
        {"montage", "s1.png", "-o", "out"},
        {"montage", "s1.png", "-i"},
        {"montage", "s1.png", "--frobnicate"},
        {"montage", "s1.png", "s2.png"},
        {"montage", "s1.png", "--offsets", "middle"},
    };
    for (const auto& args : rows) {
        const CliRun r = cli(args, dir.root());
        EXPECT_EQ(r.code, 2) << ::testing::PrintToString(args);
        EXPECT_NE(r.err.find("usage: lumiquilt-cli montage FIRST"), std::string::npos);
        EXPECT_TRUE(r.out.empty());
    }
}

TEST(Cli, HelpAndVersionGoToStandardOutput) {
    for (const char* flag : {"--help", "-h"}) {
        const CliRun r = cli({flag}, "/");
        EXPECT_EQ(r.code, 0) << flag;
        EXPECT_EQ(r.out.rfind("usage: lumiquilt-cli montage FIRST", 0), 0u) << flag;
        EXPECT_TRUE(r.err.empty()) << flag;
    }
    const CliRun v = cli({"--version"}, "/");
    EXPECT_EQ(v.code, 0);
    EXPECT_EQ(v.out, std::string("lumiquilt-cli ") + LUMIQUILT_VERSION + "\n");
    // Only alone are they answers; beside a command they are unknown options.
    EXPECT_EQ(cli({"montage", "s1.png", "--version"}, "/").code, 2);
}

TEST(Cli, ReportAndScore) {
    TestFolder dir;
    makeSeries(dir, 3);
    const CliRun r = cli(
        {"montage", "s1.png", "-i", "abc", "-m", "2", "--ignore", "2", "--report", "-", "--score"},
        dir.root());
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out.substr(0, r.out.find("score")),
              "\r\n"
              "  First file name =s1.png\r\n"
              "  Number of files found = 3\r\n"
              "  Ignore image number =2\r\n"
              "  Montage method used =2 (Average Color Difference)\r\n"
              "  Increment size =10\r\n"
              "  Smoothing =no \r\n"
              "  Montage made from dominant image numbers:\r\n"
              "\r\n");
    EXPECT_NE(r.out.find("\nscore "), std::string::npos);
    EXPECT_EQ(r.out.back(), '\n');
    // Six digits after the point.
    const std::string score = r.out.substr(r.out.find("score ") + 6);
    EXPECT_EQ(score.size() - score.find('.') - 1, 7u) << score;  // six digits and the newline
}

TEST(Cli, FlatSeriesScoresZero) {
    TestFolder dir;
    for (int k = 1; k <= 2; ++k) {
        testing::savePictureFile(testing::flatPicture(50, 40, QColor(10 * k, 90, 200)),
                                 dir.path("f" + std::to_string(k) + ".png"));
    }
    const CliRun r = cli({"montage", dir.path("f1.png"), "--score"}, "/");
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "score 0.000000\n");
}

TEST(Cli, OneImageGivesThePictureBack) {
    TestFolder dir;
    const QImage picture = testing::patternPicture(41, 23, 9);
    testing::savePictureFile(picture, dir.path("one1.png"));
    for (const char* out : {"m.bmp", "m.png"}) {
        const CliRun r = cli({"montage", "one1.png", "-i", "7", "-o", out}, dir.root());
        ASSERT_EQ(r.code, 0) << r.err;
        const QImage written(QString::fromStdString(dir.path(out)));
        ASSERT_EQ(written.size(), picture.size()) << out;
        EXPECT_EQ(written.convertToFormat(QImage::Format_RGB888), picture) << out;
    }
    const CliRun jpeg = cli({"montage", "one1.png", "-o", "m.jpeg"}, dir.root());
    EXPECT_EQ(jpeg.code, 0);
    EXPECT_EQ(QImage(QString::fromStdString(dir.path("m.jpeg"))).size(), picture.size());
}

TEST(Cli, PaddedFramesAndLargeIncrementsGiveThePictureBack) {
    // 641 by 481 pads to 644 by 484; the montage written is the picture's own size.
    TestFolder dir;
    const QImage picture = testing::patternPicture(641, 481, 4);
    testing::savePictureFile(picture, dir.path("p1.png"));
    for (const char* increment : {"1", "20", "481", "5000"}) {
        const CliRun r = cli({"montage", "p1.png", "-i", increment, "-o", "m.png"}, dir.root());
        ASSERT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(QImage(QString::fromStdString(dir.path("m.png")))
                      .convertToFormat(QImage::Format_RGB888),
                  picture)
            << increment;
    }
}

TEST(Cli, RunsTheWindowProgramWouldStopExitOne) {
    TestFolder dir;
    makeSeries(dir, 3);
    testing::writeBytes(dir.path("bad1.png"), "no picture");
    testing::savePictureFile(testing::patternPicture(10, 10, 1), dir.path("mid1.png"));
    testing::writeBytes(dir.path("mid2.png"), "corrupt");
    testing::savePictureFile(testing::patternPicture(10, 10, 3), dir.path("mid3.png"));
    struct Row {
        std::vector<std::string> args;
        std::string message;
    };
    const Row rows[] = {
        {{"montage", "gone1.png"}, "So very sorry, but I can't find that file.\n"},
        {{"montage", "nodigit.png"},
         "You must have a number as the last letter in the file name,  eg "
         "c:\\thisdirectory\\myfile1.bmp, or c:\\myotherfile6\n"},
        {{"montage", "bad1.png"}, "This is not a valid picture file that I can read.\n"},
        {{"montage", "mid1.png"}, "This is not a valid picture file that I can read.\n"},
        {{"montage", "s1.png", "-i", "99999"}, "error 6 (Overflow) at line 1000 of CommandGo\n"},
        {{"montage", "s99999.png"},
         "The number in the file name is too large: a series can start from a number of at "
         "most 32767.\n"},
    };
    testing::writeBytes(dir.path("s99999.png"), "x");
    for (const Row& row : rows) {
        const CliRun r = cli(row.args, dir.root());
        EXPECT_EQ(r.code, 1) << row.args[1];
        EXPECT_EQ(r.err, row.message) << row.args[1];
    }
}

TEST(Cli, ImageOfAnotherSizeWarnsAndGoesOn) {
    TestFolder dir;
    testing::savePictureFile(testing::patternPicture(40, 30, 1), dir.path("d1.png"));
    testing::savePictureFile(testing::patternPicture(20, 10, 2), dir.path("d2.png"));
    const CliRun r = cli({"montage", "d1.png", "--score"}, dir.root());
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(
        r.err,
        "Image 2 has a different dimension (20,10) from Image 1 (40,30).   All images must be "
        "the same size.\n");
}

TEST(Cli, UnwritableOutputFailsCleanly) {
    TestFolder dir;
    makeSeries(dir, 1);
    const CliRun r = cli({"montage", "s1.png", "-o", "no-folder/m.bmp"}, dir.root());
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, "cannot write no-folder/m.bmp: Path not found\n");
}

TEST(Cli, SaveProjectWritesThePairAsTheWindowProgramDoes) {
    TestFolder dir;
    makeSeries(dir, 4);
    const CliRun r = cli({"montage", "s1.png", "-i", "9", "-m", "3", "--ignore", "2,4", "-o",
                          "m.bmp", "--report", "-", "--save-project", "job.mon"},
                         dir.root());
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(testing::readBytes(dir.path("job.mon")), "[project]\r\n" + r.out + "\r\n");
    EXPECT_NE(r.out.find("  Ignore image number =2, 4\r\n"), std::string::npos);
    EXPECT_EQ(testing::readBytes(dir.path("job.qvz")).substr(0, 2), "BM");
    EXPECT_EQ(testing::readBytes(dir.path("job.qvz")), testing::readBytes(dir.path("m.bmp")));

    // A second save replaces both; a folder that isn't there is the write message.
    const CliRun again =
        cli({"montage", dir.path("s1.png"), "-i", "5", "--save-project", dir.path("job.mon")}, "/");
    ASSERT_EQ(again.code, 0) << again.err;
    EXPECT_NE(testing::readBytes(dir.path("job.mon")).find("  Increment size =5\r\n"),
              std::string::npos);
    const CliRun bad =
        cli({"montage", "s1.png", "--save-project", "no-folder/job.mon"}, dir.root());
    EXPECT_EQ(bad.code, 1);
    EXPECT_EQ(bad.err,
              "There is a problem in writing to that file.   The error message is 'Path not "
              "found'.   Try another name and make sure the file and disk are not write "
              "protected or full.\n");
    EXPECT_EQ(cli({"montage", "s1.png", "--save-project"}, dir.root()).code, 2);
}

}  // namespace
}  // namespace lumiquilt
