#include "cli/cli_app.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <filesystem>
#include <sstream>

#include "core/version.h"
#include "support/fingerprint.h"
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

// A command line of words without blanks in them, as a shell splits it.
CliRun cli(const std::string& line, const std::string& folder) {
    std::vector<std::string> args;
    std::istringstream in(line);
    for (std::string word; in >> word;) {
        args.push_back(word);
    }
    return cli(args, folder);
}

QImage picture(const TestFolder& dir, const std::string& name) {
    return QImage(QString::fromStdString(dir.path(name))).convertToFormat(QImage::Format_RGB888);
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
    ASSERT_EQ(cli("montage s1.png --save-project p.mon", dir.root()).code, 0);
    // "--version" is an answer only alone; a project takes the place of the choices.
    const char* const rows[] = {
        "",
        "paint s1.png",
        "montage",
        "compare",
        "evaluate s1.png -m 9",
        "compare s1.png --all-methods",
        "montage s1.png -m 7",
        "montage s1.png -m x",
        "montage s1.png --ignore 11",
        "montage s1.png --ignore 1,,2",
        "montage s1.png -o out.tif",
        "montage s1.png -o out",
        "montage s1.png -i",
        "montage s1.png --frobnicate",
        "montage s1.png s2.png",
        "montage s1.png --offsets middle",
        "montage s1.png --offsets",
        "montage s1.png --all-methods",
        "montage s1.png --mark 0:1,2",
        "montage s1.png --mark 31:1,2",
        "montage s1.png --mark 1:12",
        "montage s1.png --mark 1:a,2",
        "montage s1.png --mark 1:2,3,4",
        "montage s1.png --mark 1:2.5,3",
        "montage s1.png --mark",
        "montage s1.png --save-project",
        "montage s1.png --version",
        "montage --project p.mon s1.png",
        "montage --project p.mon -i 5",
        "montage --project p.mon -m 1",
        "montage --project p.mon --ignore 2",
        "montage --project p.mon --offsets same",
        "montage --project p.mon --mark 1:3,4",
        "montage --project",
        "compare --project p.mon",
        "compare s1.png --save-project q.mon",
    };
    for (const char* line : rows) {
        const CliRun r = cli(line, dir.root());
        EXPECT_EQ(r.code, 2) << line;
        EXPECT_NE(r.err.find("usage: lumiquilt-cli montage FIRST"), std::string::npos) << line;
        EXPECT_TRUE(r.out.empty()) << line;
    }
    EXPECT_FALSE(std::filesystem::exists(dir.path("q.mon")));
}

TEST(Cli, HelpAndVersionGoToStandardOutput) {
    for (const char* flag : {"--help", "-h"}) {
        const CliRun r = cli(flag, "/");
        EXPECT_EQ(r.code, 0) << flag;
        EXPECT_EQ(r.out.rfind("usage: lumiquilt-cli montage FIRST", 0), 0u) << flag;
        EXPECT_TRUE(r.err.empty()) << flag;
    }
    const CliRun v = cli("--version", "/");
    EXPECT_EQ(v.code, 0);
    EXPECT_EQ(v.out, std::string("lumiquilt-cli ") + kVersionText + "\n");
}

// The engine's own table holds every message a run can end with; these rows show
// that each command passes them on, and what only lumiquilt-cli says.
TEST(Cli, RunsEndWithTheirMessages) {
    TestFolder dir;
    makeSeries(dir, 1);
    testing::writeBytes(dir.path("bad1.png"), "no picture");
    testing::savePictureFile(testing::patternPicture(40, 30, 1), dir.path("d1.png"));
    testing::savePictureFile(testing::patternPicture(20, 10, 2), dir.path("d2.png"));
    const std::string notFound = "So very sorry, but I can't find that file.\n";
    struct Row {
        std::string line;
        int code;
        std::string err;
    };
    // Where the window program would stop, lumiquilt-cli exits with 1.
    const Row rows[] = {
        {"montage gone1.png", 1, notFound},
        {"montage s1.png -o no-folder/m.bmp", 1, "cannot write no-folder/m.bmp: Path not found\n"},
        {"compare gone1.png", 1, notFound},
        {"evaluate gone1.png", 1, notFound},
        {"evaluate bad1.png --all-methods", 1,
         "This is not a valid picture file that I can read.\n"},
        {"montage --project none.mon", 1,
         "There is a problem in reading that file.   It appears not to exist.   Try another "
         "project file.\n"},
        // An image of another size is a warning only.
        {"montage d1.png", 0,
         "Image 2 has a different dimension (20,10) from Image 1 (40,30).   All images must be "
         "the same size.\n"},
    };
    for (const Row& row : rows) {
        const CliRun r = cli(row.line, dir.root());
        EXPECT_EQ(r.code, row.code) << row.line;
        EXPECT_TRUE(r.out.empty()) << row.line;
        EXPECT_EQ(r.err, row.err) << row.line;
    }
}

// The report's layout is the engine's, and the window program's report is this one
// byte for byte; here, that the options reach it and the score follows it.
TEST(Cli, ReportAndScore) {
    TestFolder dir;
    makeSeries(dir, 3);
    const CliRun r = cli("montage s1.png -i abc -m 2 --ignore 2 --report - --score", dir.root());
    ASSERT_EQ(r.code, 0) << r.err;
    const std::string report = r.out.substr(0, r.out.find("score"));
    EXPECT_EQ(report.rfind("\r\n  First file name =s1.png\r\n", 0), 0u) << report;
    for (const char* line :
         {"  Ignore image number =2\r\n", "  Montage method used =2 (Average Color Difference)\r\n",
          "  Increment size =10\r\n"}) {
        EXPECT_NE(report.find(line), std::string::npos) << line;
    }
    EXPECT_TRUE(report.ends_with("dominant image numbers:\r\n\r\n")) << report;
    // The score alone on the last line, six digits after the point.
    const std::string score = r.out.substr(report.size());
    EXPECT_EQ(score.rfind("score ", 0), 0u) << score;
    EXPECT_EQ(score.size() - score.find('.') - 1, 7u) << score;  // six digits and the newline
}

TEST(Cli, OffsetsReportTheMarksAndTheDesignPlace) {
    TestFolder dir;
    makeSeries(dir, 3);
    const CliRun r =
        cli("montage s1.png --offsets max --mark 3:-4,50 --mark 2:1,1 --mark 2:20,9 --report -",
            dir.root());
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find("  Smoothing =no \r\n"
                         "  Offset display method =Maximum\r\n"
                         "  Image 1 offset X =13\r\n  Image 1 offset Y =13\r\n"
                         "  Image 2 offset X =20\r\n  Image 2 offset Y =9\r\n"
                         "  Image 3 offset X =-4\r\n  Image 3 offset Y =50\r\n"
                         "  Montage made from"),
              std::string::npos)
        << r.out;
    // Without --offsets the marks change nothing.
    const CliRun plain = cli("montage s1.png -o a.png --report -", dir.root());
    const CliRun marked = cli("montage s1.png --mark 2:40,2 -o b.png --report -", dir.root());
    EXPECT_EQ(marked.out, plain.out);
    EXPECT_EQ(picture(dir, "b.png"), picture(dir, "a.png"));
}

TEST(Cli, OneImageGivesThePictureBack) {
    TestFolder dir;
    const QImage small = testing::patternPicture(41, 23, 9);
    // 641 by 481 pads to 644 by 484; the montage written is the picture's own size.
    const QImage padded = testing::patternPicture(641, 481, 4);
    testing::savePictureFile(small, dir.path("one1.png"));
    testing::savePictureFile(padded, dir.path("p1.png"));
    const std::pair<const char*, const QImage*> rows[] = {
        {"one1.png -i 7 -o m.bmp", &small},
        {"one1.png -i 7 -o m.png", &small},
        {"p1.png -i 20 -o m.png", &padded},
    };
    for (const auto& [line, expected] : rows) {
        const CliRun r = cli(std::string("montage ") + line, dir.root());
        ASSERT_EQ(r.code, 0) << r.err;
        const std::string written = std::string(line).substr(std::string(line).rfind(' ') + 1);
        EXPECT_EQ(picture(dir, written), *expected) << line;
    }
    EXPECT_EQ(cli("montage one1.png -o m.jpeg", dir.root()).code, 0);
    EXPECT_EQ(picture(dir, "m.jpeg").size(), small.size());
}

TEST(Cli, EvaluateOfANarrowSeriesTriesNothing) {
    TestFolder dir;
    makeSeries(dir, 2, 50, 30);  // 50 / 6 is below 10
    const CliRun r = cli("evaluate s1.png -m 4 -i 5 -o m.png", dir.root());
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, "best 4 0\n");
    // The montage written is the one the run with the given options made.
    cli("montage s1.png -m 4 -i 5 -o alone.png", dir.root());
    EXPECT_EQ(picture(dir, "m.png"), picture(dir, "alone.png"));
}

// Replacing, reading back and saving again are the project file's own tests; here,
// that the option writes the pair and says why it could not.
TEST(Cli, SaveProjectWritesThePairAsTheWindowProgramDoes) {
    TestFolder dir;
    makeSeries(dir, 4);
    const CliRun r =
        cli("montage s1.png -i 9 -m 3 --ignore 2,4 -o m.bmp --report - --save-project job.mon",
            dir.root());
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(testing::readBytes(dir.path("job.mon")), "[project]\r\n" + r.out + "\r\n");
    EXPECT_EQ(testing::readBytes(dir.path("job.qvz")).substr(0, 2), "BM");
    EXPECT_EQ(testing::readBytes(dir.path("job.qvz")), testing::readBytes(dir.path("m.bmp")));
    const CliRun bad = cli("montage s1.png --save-project no-folder/job.mon", dir.root());
    EXPECT_EQ(bad.code, 1);
    EXPECT_EQ(bad.err,
              "There is a problem in writing to that file.   The error message is 'Path not "
              "found'.   Try another name and make sure the file and disk are not write "
              "protected or full.\n");
}

using testing::fingerprint;

TEST(Cli, SampleMontagesAreByteForByteWhatTheyWere) {
    // Fingerprints of what the program wrote before its series was read ahead and its
    // montage written straight from the buffer: the BMP file, the report with the
    // score, the GIF file; for every method at increments 1, 20 and 200. They hold
    // for the picture decoders of Debian 12, which decode the sample JPEG files.
    struct Row {
        int method;
        int increment;
        uint64_t bmp;
        uint64_t reportAndScore;
        uint64_t gif;
    };
    const Row rows[] = {
        {0, 1, 18219238159585420665ull, 2638823299781334805ull, 16703596981801909224ull},
        {0, 20, 11594567860198806323ull, 5017295600808675232ull, 1024827635151218796ull},
        {0, 200, 5623277950433574399ull, 4942924699826486479ull, 1409056522946638134ull},
        {1, 1, 12487135114200755573ull, 3556029800249803650ull, 9548070566621839589ull},
        {1, 20, 8207375842501746731ull, 4970204930158179967ull, 11418968675791786541ull},
        {1, 200, 798000652742706729ull, 9219349396477418992ull, 10881053847620078713ull},
        {2, 1, 12487135114200755573ull, 16972837103125145575ull, 9548070566621839589ull},
        {2, 20, 8207375842501746731ull, 18079199843969002060ull, 11418968675791786541ull},
        {2, 200, 798000652742706729ull, 13432253578825242361ull, 10881053847620078713ull},
        {3, 1, 1156878741160961030ull, 16960995424137390504ull, 10603909429897271362ull},
        {3, 20, 472101141354218837ull, 5915571236494688882ull, 6383183761873000076ull},
        {3, 200, 6482378201382893948ull, 3106882102882529451ull, 14042545839236300584ull},
        {4, 1, 5351910849850342338ull, 4186353289250282262ull, 4197314303741614347ull},
        {4, 20, 749835150922777083ull, 15799707889481064117ull, 3994076207566281185ull},
        {4, 200, 2558575227895379121ull, 14043364798461437960ull, 16182348068171097474ull},
        {5, 1, 11451174991047015352ull, 16563535611101249349ull, 2576461371068026989ull},
        {5, 20, 1640037082520429539ull, 11531450820410291785ull, 11297075331072140039ull},
        {5, 200, 6482378201382893948ull, 1032264696107052913ull, 14042545839236300584ull},
        {6, 1, 10641662534079520508ull, 3353454808424464344ull, 6031317249108050478ull},
        {6, 20, 15528475492433510673ull, 1515533715750776865ull, 3965654088821495115ull},
        {6, 200, 3281041032299339033ull, 10471375810960287010ull, 1919159417234675094ull},
    };
    // PNG files are zlib's work: the same bytes as before on the same zlib, for each
    // method at increment 20.
    const uint64_t pngAt20[] = {
        3392405562084085396ull,  18336568737464481247ull, 18336568737464481247ull,
        3861179426725142198ull,  8008165453683725451ull,  9099357218417745288ull,
        12865025072767892163ull,
    };
    TestFolder dir;
    // The report names FIRST as given: a name relative to the run's folder keeps it
    // the same wherever the sources stand.
    for (int k = 1; k <= 5; ++k) {
        const std::string name = "coffee" + std::to_string(k) + ".jpg";
        std::filesystem::copy_file(std::string(LUMIQUILT_SAMPLES) + "/" + name, dir.path(name));
    }
    const std::string first = "coffee1.jpg";
    // The program itself, in a process of its own: a picture file's resolution is
    // what a process without a screen gives it.
    auto cli = [](const std::vector<std::string>& args, const std::string& folder) {
        QProcess process;
        process.setWorkingDirectory(QString::fromStdString(folder));
        QStringList list;
        for (const std::string& a : args) {
            list << QString::fromStdString(a);
        }
        process.start(LUMIQUILT_CLI, list);
        process.waitForFinished(-1);
        return CliRun{process.exitCode(), process.readAllStandardOutput().toStdString(),
                      process.readAllStandardError().toStdString()};
    };
    for (const Row& row : rows) {
        const std::string what =
            "method " + std::to_string(row.method) + " increment " + std::to_string(row.increment);
        const std::vector<std::string> common = {"montage", first,
                                                 "-m",      std::to_string(row.method),
                                                 "-i",      std::to_string(row.increment)};
        auto with = [&common](std::vector<std::string> more) {
            more.insert(more.begin(), common.begin(), common.end());
            return more;
        };
        const CliRun bmp = cli(with({"-o", "m.bmp", "--report", "-", "--score"}), dir.root());
        ASSERT_EQ(bmp.code, 0) << bmp.err;
        EXPECT_EQ(fingerprint(testing::readBytes(dir.path("m.bmp"))), row.bmp) << what;
        EXPECT_EQ(fingerprint(bmp.out), row.reportAndScore) << what;
        ASSERT_EQ(cli(with({"-o", "m.gif"}), dir.root()).code, 0);
        EXPECT_EQ(fingerprint(testing::readBytes(dir.path("m.gif"))), row.gif) << what;
        if (row.increment == 20) {
            ASSERT_EQ(cli(with({"-o", "m.png"}), dir.root()).code, 0);
            EXPECT_EQ(fingerprint(testing::readBytes(dir.path("m.png"))), pngAt20[row.method])
                << what;
        }
    }
}

}  // namespace
}  // namespace lumiquilt
