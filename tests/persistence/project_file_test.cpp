#include "persistence/project_file.h"

#include <gtest/gtest.h>

#include <sstream>

#include "core/runtime_error.h"
#include "engine/properties_report.h"
#include "support/locked_folder.h"
#include "support/persistence_files.h"
#include "support/series_error_of.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;
using testing::errorOf;
using testing::fileBytes;
using Steps = std::vector<std::string>;

const std::string kData = std::string(LUMIQUILT_TEST_DATA) + "/projects/";

// Notes every step of an Open in one line each.
class RecordingRestore : public ProjectRestore {
  public:
    explicit RecordingRestore(int count) : count(count) {}
    void setFirstFileName(const std::string& text) override { steps.push_back("file " + text); }
    void uncheckMethods() override { steps.push_back("uncheck methods"); }
    void checkMethod(int index) override { steps.push_back("method " + std::to_string(index)); }
    void setIncrementText(const std::string& text) override {
        steps.push_back("increment " + text);
    }
    int imageCount() const override { return count; }
    void offsetsOn() override { steps.push_back("offsets on"); }
    void placeMark(int n, double x, double y) override {
        std::ostringstream s;
        s << "mark " << n << " " << x << " " << y;
        steps.push_back(s.str());
    }
    void marksPlaced() override { steps.push_back("marks placed"); }
    void setOffsetDisplay(OffsetDisplay display) override {
        steps.push_back(display == OffsetDisplay::minimum   ? "display minimum"
                        : display == OffsetDisplay::maximum ? "display maximum"
                                                            : "display same");
    }
    void offsetsOff() override { steps.push_back("offsets off"); }
    void setIgnored(int index, bool ignored) override {
        if (ignored) {
            steps.push_back("ignore " + std::to_string(index + 1));
        }
        ++ignoreEntries;
    }

    Steps steps;
    int ignoreEntries = 0;

  private:
    int count;
};

ReportInputs sampleRun() {
    ReportInputs in;
    in.firstFileName = "/pics/scene1.jpg";
    in.imageCount = 12;
    in.ignored[1] = true;
    in.ignored[9] = true;
    in.methodChecked[3] = true;
    in.incrementText = "20";
    in.addOffsets = true;
    in.offsetsMax = true;
    for (int k = 1; k <= 12; ++k) {
        in.imageOffsets[0][static_cast<size_t>(k)] = static_cast<int16_t>(100 + k);
        in.imageOffsets[1][static_cast<size_t>(k)] = static_cast<int16_t>(-k);
    }
    in.usedCaption = "1 1 3\r\n3 12 1\r\n";
    return in;
}

class ProjectFileTest : public testing::ScratchFolderTest {
  protected:
    void save(const std::string& name, const std::string& text, const std::string& picture) {
        ProjectSave s(name);
        s.writeText(text);
        s.writeCompanion(
            [&](const std::string& temporary) { testing::putFile(temporary, picture); });
        s.commit();
    }
    void saveOld() { save(path("job.mon"), "old report\r\n", "old picture"); }
    // The pair saveOld wrote, byte for byte, and nothing else in the folder.
    void expectOldPair() {
        EXPECT_EQ(fileBytes(path("job.mon")), "[project]\r\nold report\r\n\r\n");
        EXPECT_EQ(fileBytes(path("job.qvz")), "old picture");
        EXPECT_EQ(entries(), (Steps{"job.mon", "job.qvz"}));
    }
};

TEST(ProjectNames, ProposalCompanionAndRecentItem) {
    const std::pair<const char*, const char*> proposals[] = {
        {"/pics.old/scene1.jpg", "/pics.mon"},  // the first dot counts, in a folder too
        {"/pics/scene1", "/pics/scene1.mon"},
        {"scene1.tar.gz", "scene1.mon"},
        {"", ".mon"},
    };
    for (const auto& [text, name] : proposals) {
        EXPECT_EQ(proposeProjectName(text), name) << text;
    }
    const std::pair<const char*, const char*> companions[] = {
        {"/p/job.project", "/p/job.projqvz"},  // chosen under "All files"
        {"/p/jöb.mön", "/p/jöb.qvz"},          // characters, not bytes
        {"abc", "qvz"},
    };
    for (const auto& [name, companion] : companions) {
        EXPECT_EQ(companionPictureName(name), companion) << name;
    }
    EXPECT_THROW(companionPictureName("ab"), RuntimeError);
    EXPECT_TRUE(isRecentProjectItem("project /p/Job"));
    EXPECT_FALSE(isRecentProjectItem("Project /p/Job"));
    EXPECT_FALSE(isRecentProjectItem("/p/project 1.jpg"));
}

TEST(ProjectLists, NumbersStandAsWholeItems) {
    EXPECT_TRUE(listHoldsNumber("1, 3, 10", 10));
    EXPECT_TRUE(listHoldsNumber("1, 3, 10", 1));
    EXPECT_FALSE(listHoldsNumber("10", 1));
    EXPECT_FALSE(listHoldsNumber("0", 1));
    EXPECT_FALSE(listHoldsNumber("", 1));
    EXPECT_FALSE(listHoldsNumber("12abc, ,", 12));
}

TEST_F(ProjectFileTest, SaveReplacesBothFilesAndOpenRestoresTheRunInItsOrder) {
    saveOld();
    const std::string report = setPropertiesString(sampleRun());
    save(path("job.mon"), report, "BM");
    EXPECT_EQ(fileBytes(path("job.mon")), "[project]\r\n" + report + "\r\n");
    EXPECT_EQ(fileBytes(path("job.qvz")), "BM");
    EXPECT_EQ(entries(), (Steps{"job.mon", "job.qvz"}));
    RecordingRestore target(12);
    restoreProject(path("job.mon"), target);
    Steps expected = {"file /pics/scene1.jpg", "uncheck methods", "method 3", "increment 20",
                      "offsets on"};
    for (int n = 1; n <= 12; ++n) {
        // Ignored images have no lines: their marks go to 0, 0.
        const bool ignored = n == 2 || n == 10;
        expected.push_back("mark " + std::to_string(n) + " " +
                           (ignored ? "0 0" : std::to_string(100 + n) + " " + std::to_string(-n)));
    }
    expected.insert(expected.end(), {"marks placed", "display maximum", "ignore 2", "ignore 10"});
    EXPECT_EQ(target.steps, expected);
    // More than ten images loaded: only the ten ignore entries are touched.
    EXPECT_EQ(target.ignoreEntries, 10);

    const ProjectText opened = readProjectText(path("job.mon"));
    EXPECT_EQ(opened.propertiesString, report + "\r\n");
    EXPECT_EQ(opened.usedCaption, "1 1 3\r\n3 12 1\r\n\r\n\r\n");
    save(path("job.mon"), opened.propertiesString, "BM");
    EXPECT_EQ(readProjectText(path("job.mon")).propertiesString, report + "\r\n\r\n");
}

// How a run was made, how many images are loaded when its project is opened, and
// what the Open then does after the increment.
TEST_F(ProjectFileTest, RestoreEdges) {
    const struct {
        const char* name;
        std::vector<int> ignored;
        bool offsets;
        int loadedBefore;
        Steps expectedTail;
        int ignoreEntries;
    } rows[] = {
        {"no ignored image unchecks all ten", {}, false, 12, {"offsets off"}, 10},
        {"image ten alone is not image one", {10}, false, 12, {"offsets off", "ignore 10"}, 10},
        {"only the loaded images' entries", {1, 2}, false, 1, {"offsets off", "ignore 1"}, 1},
        {"no offsets switches them off", {}, false, 3, {"offsets off"}, 3},
        {"no series loaded places no mark",
         {},
         true,
         0,
         {"offsets on", "marks placed", "display maximum"},
         0},
        // An ignored image 1 has no X line: the project reads as one without offsets.
        {"ignored image one means no offsets", {1}, true, 3, {"offsets off", "ignore 1"}, 3},
    };
    for (const auto& row : rows) {
        ReportInputs run = sampleRun();
        run.imageCount = 3;
        run.ignored = {};
        for (int k : row.ignored) {
            run.ignored[static_cast<size_t>(k - 1)] = true;
        }
        run.addOffsets = row.offsets;
        save(path("job.mon"), setPropertiesString(run), "BM");
        RecordingRestore target(row.loadedBefore);
        restoreProject(path("job.mon"), target);
        EXPECT_EQ(Steps(target.steps.begin() + 4, target.steps.end()), row.expectedTail)
            << row.name;
        EXPECT_EQ(target.ignoreEntries, row.ignoreEntries) << row.name;
    }
}

TEST_F(ProjectFileTest, AMethodOutsideTheMenuOrBeyondSixteenBitsStopsAfterUncheckingMethods) {
    RecordingRestore nine(3);
    EXPECT_EQ(errorOf([&] { restoreProject(kData + "method_nine.mon", nine); }), 9);
    EXPECT_EQ(nine.steps, (Steps{"file /pics/scene1.jpg", "uncheck methods"}));
    testing::putFile(path("big.mon"), "[project]\r\n  Montage method used =70000 (x)\r\n");
    RecordingRestore big(0);
    EXPECT_EQ(errorOf([&] { restoreProject(path("big.mon"), big); }), 6);
    EXPECT_EQ(big.steps, (Steps{"file 0", "uncheck methods"}));
}

// Project files a user may pick by mistake or a crash may leave: the values read
// or the default "0", the report text line by line, and never a crash or a hang.
TEST(HostileProject, OpenReadsValuesOrDefaults) {
    const Steps defaults = {"file 0", "uncheck methods", "method 0", "increment 0", "offsets off"};
    const Steps good = {"file /pics/scene1.jpg",
                        "uncheck methods",
                        "method 3",
                        "increment 20",
                        "offsets on",
                        "mark 1 12 -4",
                        "mark 2 0 0",
                        "mark 3 10 7",
                        "marks placed",
                        "display minimum",
                        "ignore 2"};
    const struct {
        const char* file;
        const Steps& steps;
        size_t textLines;
    } rows[] = {
        {"good.mon", good, 17},        {"lf_only.mon", good, 17},
        {"cr_only.mon", defaults, 17},  // no profile line ends, but the text's lines do
        {"no_head.mon", defaults, 16}, {"repeated_key.mon", good, 19},
        {"garbage.mon", defaults, 0},
    };
    for (const auto& row : rows) {
        RecordingRestore target(3);
        restoreProject(kData + row.file, target);
        EXPECT_EQ(target.steps, row.steps) << row.file;
        const std::string text = readProjectText(kData + row.file).propertiesString;
        size_t lines = 0;
        for (size_t p = text.find("\r\n"); p != std::string::npos; p = text.find("\r\n", p + 2)) {
            ++lines;
        }
        EXPECT_EQ(lines, row.textLines) << row.file;
    }
}

TEST(HostileProject, NulBytesCutTheValues) {
    RecordingRestore target(0);
    restoreProject(kData + "nul_bytes.mon", target);
    EXPECT_EQ(target.steps[0], "file /pi");
    EXPECT_EQ(target.steps[2], "method 0");
    const ProjectText text = readProjectText(kData + "nul_bytes.mon");
    EXPECT_NE(text.propertiesString.find(std::string("/pi\0cs", 6)), std::string::npos);
}

TEST_F(ProjectFileTest, TenMegabyteLinesAndManyShortLinesReadInOnePass) {
    const std::string big(10 * 1024 * 1024, 'q');
    testing::putFile(path("big.mon"),
                     "[project]\r\n  Increment size =" + big + "\r\n" + big +
                         "\r\n  Montage made from dominant image numbers:\r\n1 2\r\n");
    RecordingRestore target(0);
    restoreProject(path("big.mon"), target);
    EXPECT_EQ(target.steps[3], "increment " + std::string(254, 'q'));
    EXPECT_EQ(readProjectText(path("big.mon")).usedCaption, "1 2\r\n");

    std::string many = "[project]\r\n";
    for (int i = 0; i < 2'000'000; ++i) {
        many += "x\n";
    }
    testing::putFile(path("many.mon"), many);
    EXPECT_EQ(readProjectText(path("many.mon")).propertiesString.size(), 6'000'000u);
}

TEST_F(ProjectFileTest, MissingOrFolderProjectIsAnError) {
    EXPECT_THROW(readProjectText(path("none.mon")), RuntimeError);
    fs::create_directories(path("dir.mon"));
    EXPECT_THROW(readProjectText(path("dir.mon")), RuntimeError);
}

TEST_F(ProjectFileTest, ReadOnlyTargetsAreRefusedBeforeAnythingIsWritten) {
    for (const char* locked : {"job.mon", "job.qvz"}) {
        saveOld();
        fs::permissions(path(locked), fs::perms::owner_read, fs::perm_options::replace);
        EXPECT_EQ(errorOf([&] { ProjectSave s(path("job.mon")); }), 70) << locked;
        fs::permissions(path(locked), fs::perms::owner_read | fs::perms::owner_write,
                        fs::perm_options::replace);
        expectOldPair();
    }
}

TEST_F(ProjectFileTest, AReadOnlyFolderLeavesTheOldProject) {
    saveOld();
    testing::LockedFolder lock(m_dir.string());
    if (!lock.locked()) {
        GTEST_SKIP() << "this user may write into any folder";
    }
    EXPECT_EQ(errorOf([&] { save(path("job.mon"), "new report\r\n", "new picture"); }), 70);
    lock.unlock();
    expectOldPair();
}

TEST_F(ProjectFileTest, AFailedPictureWriterLeavesNoTemporaryFile) {
    saveOld();
    {
        ProjectSave s(path("job.mon"));
        s.writeText("new report\r\n");
        EXPECT_THROW(s.writeCompanion([](const std::string&) {}), RuntimeError);  // wrote nothing
        EXPECT_THROW(s.commit(), RuntimeError);
    }
    expectOldPair();
}

}  // namespace
}  // namespace lumiquilt
