// The Create Image road driven by a scripted front end: no Qt, no windows.
#include "engine/create_image.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "core/runtime_error.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;

// A picture of one colour, blue-green-red, top row first.
struct FakePicture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> bytes;
};

FakePicture solid(int width, int height, uint8_t red, uint8_t green, uint8_t blue) {
    FakePicture p{width, height, {}};
    for (int i = 0; i < width * height; ++i) {
        p.bytes.insert(p.bytes.end(), {blue, green, red});
    }
    return p;
}

// Files on disk decide what exists; the pictures they "decode" to come from a table,
// and a file without an entry is no picture.
class ScriptedFront : public CreateImageFront {
  public:
    RunChoices chosen;
    std::string fileName;
    std::map<std::string, FakePicture> pictures;
    std::vector<std::string> log;
    std::vector<std::string> messages;
    std::function<void(int k)> afterLoad;
    std::map<int, MarkCentre> marks;  // images without one keep the design place

    RunChoices choices() override { return chosen; }
    void setIncrementText(const std::string& text) override { chosen.incrementText = text; }
    std::string fileNameText() override { return fileName; }
    void setFileNameText(const std::string& text) override { fileName = text; }
    void message(const std::string& text, const std::string& title, MessageIcon icon) override {
        messages.push_back(text + " | " + title + " | " + std::to_string(static_cast<int>(icon)));
    }
    void loadMember(int k, const std::string& name) override {
        if (!fs::is_regular_file(name)) {
            throw RuntimeError(kFileNotFound);
        }
        const auto found = pictures.find(name);
        if (found == pictures.end()) {
            throw RuntimeError(kInvalidPicture);
        }
        loaded.resize(static_cast<size_t>(k));
        loaded[static_cast<size_t>(k - 1)] = &found->second;
        log.push_back("load " + std::to_string(k));
        if (afterLoad) {
            afterLoad(k);
        }
    }
    PictureView memberPicture(int k) override {
        const FakePicture& p = *loaded.at(static_cast<size_t>(k - 1));
        return PictureView{p.width, p.height, p.bytes.data(), 3 * p.width, PixelFormat::bgr24};
    }
    void setBusy(bool busy) override { log.push_back(busy ? "busy" : "idle"); }
    void hideLastRun(const std::string&) override { log.push_back("hide"); }
    void forgetMissingFile(const std::string&) override { log.push_back("forget"); }
    void arrangeWindows() override { log.push_back("arrange"); }
    MarkCentre markCentre(int k) override {
        const auto found = marks.find(k);
        return found == marks.end() ? kDesignMarkCentre : found->second;
    }
    void montageResized() override { log.push_back("resized"); }
    void hideMontage() override { log.push_back("hide montage"); }
    void startPreview() override { log.push_back("preview"); }
    void showMontage() override { log.push_back("show"); }
    void runReported(const std::string&) override { log.push_back("reported"); }
    void runClosed(const std::string&) override { log.push_back("closed"); }

  private:
    std::vector<const FakePicture*> loaded;
};

class CreateImageRoad : public ::testing::Test {
  public:
    void SetUp() override {
        dir = fs::temp_directory_path() /
              ("lumiquilt_road_" +
               std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(dir);
        fs::create_directories(dir);
        initialiseProgramState(state);
        state.appPath = dir.string() + "/";
        front.chosen.incrementText = "4";
        front.chosen.methodChecked[0] = true;
    }
    void TearDown() override { fs::remove_all(dir); }

    std::string path(const std::string& name) const { return (dir / name).string(); }
    // Members first..first+count-1 of "s", each a picture unless listed as broken.
    void makeSeries(int count, int first = 1) {
        for (int k = first; k < first + count; ++k) {
            const std::string name = path("s" + std::to_string(k) + ".bmp");
            std::ofstream(name) << "x";
            front.pictures[name] = solid(12, 8, static_cast<uint8_t>(20 * k), 0, 0);
        }
    }
    RunEnd run(const std::string& first) {
        front.fileName = first;
        return createImage(state, front);
    }

    fs::path dir;
    ProgramState state;
    ScriptedFront front;
};

TEST_F(CreateImageRoad, CompletedRunWalksEveryStageInOrder) {
    makeSeries(3);
    EXPECT_EQ(run("s1"), RunEnd::completed);
    EXPECT_TRUE(front.messages.empty());
    const std::vector<std::string> expected = {"busy",     "hide",    "load 1",  "load 2",
                                               "load 3",   "arrange", "preview", "show",
                                               "reported", "idle",    "closed"};
    EXPECT_EQ(front.log, expected);
    EXPECT_EQ(state.imageCount, 3);
    EXPECT_EQ(state.imageWidth, 12);
    // The brightest red (image 3) wins every block under the first method.
    const uint8_t* montage = state.buffers.montageSlot(100);
    EXPECT_EQ(montage[2], 60);
    // The field returns to what was typed; the report names it too.
    EXPECT_EQ(front.fileName, "s1");
    EXPECT_NE(state.propertiesString.find("First file name =s1\r\n"), std::string::npos);
}

struct EarlyExit {
    const char* name;
    std::function<void(CreateImageRoad&)> prepare;
    const char* first;
    RunEnd end;
    const char* message;  // the start of the one message, or "" for none
    int imageCount;
    bool closed;  // the closing steps ran
};

class CreateImageEarlyExit : public CreateImageRoad,
                             public ::testing::WithParamInterface<EarlyExit> {};

TEST_P(CreateImageEarlyExit, EndsAsTheRoadSays) {
    const EarlyExit& row = GetParam();
    row.prepare(*this);
    EXPECT_EQ(run(path(row.first)), row.end);
    if (*row.message == '\0') {
        EXPECT_TRUE(front.messages.empty());
    } else {
        ASSERT_FALSE(front.messages.empty());
        EXPECT_EQ(front.messages.front().rfind(row.message, 0), 0u) << front.messages.front();
    }
    EXPECT_EQ(state.imageCount, row.imageCount);
    const bool closed = !front.log.empty() && front.log.back() == "closed";
    EXPECT_EQ(closed, row.closed);
    // Busy is always undone, and nothing is arranged after an early exit.
    EXPECT_EQ(front.log.back() == "idle" || closed, true);
    if (row.end != RunEnd::completed) {
        EXPECT_EQ(std::count(front.log.begin(), front.log.end(), "arrange"), 0);
        EXPECT_EQ(std::count(front.log.begin(), front.log.end(), "show"), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Road, CreateImageEarlyExit,
    ::testing::Values(
        EarlyExit{"NoDigit", [](CreateImageRoad&) {}, "scene.bmp", RunEnd::endedEarly,
                  "You must have a number as the last letter", 0, false},
        EarlyExit{"MissingFile", [](CreateImageRoad&) {}, "s1.bmp", RunEnd::endedEarly,
                  "So very sorry, but I can't find that file. | roll the dice again | 3", 0, false},
        EarlyExit{"FirstNumberTooLarge",
                  [](CreateImageRoad& t) { std::ofstream(t.path("s99999.bmp")) << "x"; },
                  "s99999.bmp", RunEnd::endedEarly, "The number in the file name is too large", 0,
                  false},
        EarlyExit{"InvalidPicture",
                  [](CreateImageRoad& t) {
                      t.makeSeries(2);
                      std::ofstream(t.path("s3.bmp")) << "no picture";
                  },
                  "s1.bmp", RunEnd::stopped,
                  "This is not a valid picture file that I can read. | Try a different format", 2,
                  true},
        EarlyExit{"ThirtyPictureLimit", [](CreateImageRoad& t) { t.makeSeries(31); }, "s1.bmp",
                  RunEnd::completed,
                  "I can only cope with  30 pictures, so I will use the first ones. | No wuckas "
                  "mate",
                  30, true},
        EarlyExit{"MemberVanishingMidRun",
                  [](CreateImageRoad& t) {
                      t.makeSeries(4);
                      t.front.afterLoad = [&t](int k) {
                          if (k == 1) {
                              fs::remove(t.path("s3.bmp"));
                          }
                      };
                  },
                  "s1.bmp", RunEnd::completed, "", 2, true}),
    [](const ::testing::TestParamInfo<EarlyExit>& info) { return std::string(info.param.name); });

TEST_F(CreateImageRoad, IncrementTextIsCheckedAndWrittenBack) {
    makeSeries(1);
    front.chosen.incrementText = "abc";
    EXPECT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_EQ(front.chosen.incrementText, "10");
    EXPECT_EQ(state.increment, 10);
    front.chosen.incrementText = "40000";
    EXPECT_EQ(run(path("s1.bmp")), RunEnd::stopped);
    EXPECT_EQ(front.messages.back(),
              "error 6 (Overflow) at line 1000 of CommandGo | Nobody's "
              "Perfect | 1");
}

TEST_F(CreateImageRoad, LaterEvaluationPassesKeepTheSeries) {
    makeSeries(2);
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::completed);
    front.log.clear();
    state.evaluationPass = 2;
    fs::remove(path("s2.bmp"));  // not read again
    EXPECT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_EQ(state.imageCount, 2);
    EXPECT_EQ(std::count(front.log.begin(), front.log.end(), "load 1"), 0);
    EXPECT_EQ(std::count(front.log.begin(), front.log.end(), "show"), 1);
}

TEST_F(CreateImageRoad, ProjectMontageSkipsTheBlockLoopOnce) {
    makeSeries(2);
    state.montageFromProject = kTrue;
    EXPECT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_EQ(state.montageFromProject, kFalse);
    EXPECT_EQ(std::count(front.log.begin(), front.log.end(), "preview"), 0);
    EXPECT_EQ(std::count(front.log.begin(), front.log.end(), "reported"), 1);
    EXPECT_FALSE(state.propertiesString.empty());
}

class CreateImageOffsets : public CreateImageRoad {
  public:
    void SetUp() override {
        CreateImageRoad::SetUp();
        front.chosen.addOffsets = true;
    }
    void mode(bool min, bool max, bool same) {
        front.chosen.offsetsMin = min;
        front.chosen.offsetsMax = max;
        front.chosen.offsetsSame = same;
    }
    int count(const std::string& entry) const {
        return static_cast<int>(std::count(front.log.begin(), front.log.end(), entry));
    }
};

TEST_F(CreateImageOffsets, MinimumShrinksOnceAndReportsTheCentres) {
    makeSeries(3);  // 12 by 8
    mode(true, false, false);
    front.marks[2] = {17, 14};
    front.marks[3] = {11.5, 12};  // rounds to 12
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_TRUE(front.messages.empty());
    // Spread 5 across and 2 down: 12 - 5 = 7 -> 4, 8 - 2 = 6 -> 4.
    EXPECT_EQ(state.imageWidth, 4);
    EXPECT_EQ(state.imageHeight, 4);
    EXPECT_EQ(count("resized"), 1);
    EXPECT_EQ(state.offsetBaseX, 12);
    EXPECT_EQ(state.offsetBaseY, 12);
    const std::string offsetLines =
        "  Offset display method =Minimum\r\n"
        "  Image 1 offset X =13\r\n  Image 1 offset Y =13\r\n"
        "  Image 2 offset X =17\r\n  Image 2 offset Y =14\r\n"
        "  Image 3 offset X =12\r\n  Image 3 offset Y =12\r\n";
    EXPECT_NE(state.propertiesString.find("  Smoothing =no \r\n" + offsetLines +
                                          "  Montage made from dominant image numbers:"),
              std::string::npos)
        << state.propertiesString;

    // A second run reloads the full size and comes to the same place.
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_EQ(state.imageWidth, 4);
    // A later evaluation pass neither shrinks again nor restores.
    state.evaluationPass = 2;
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_EQ(state.imageWidth, 4);
    EXPECT_EQ(state.imageHeight, 4);
}

TEST_F(CreateImageOffsets, NoDisplayEntryAppliesNothingButReportsZeros) {
    makeSeries(2);
    mode(false, false, false);
    front.marks[2] = {30, 3};
    state.offsetX(2) = 5;  // a last run's value is cleared
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_EQ(state.imageWidth, 12);
    EXPECT_EQ(state.offsetX(2), 0);
    EXPECT_EQ(count("resized"), 0);
    EXPECT_EQ(state.propertiesString.find("Offset display method"), std::string::npos);
    EXPECT_NE(state.propertiesString.find("  Image 2 offset X =0\r\n  Image 2 offset Y =0\r\n"),
              std::string::npos);
}

TEST_F(CreateImageOffsets, MinimumWithNothingLeftEndsWithItsMessage) {
    makeSeries(2);
    mode(true, false, false);
    front.marks[2] = {13 + 40, 13};  // 12 - 40 leaves no picture
    state.sizingFrameHeight = 4;
    EXPECT_EQ(run(path("s1.bmp")), RunEnd::endedEarly);
    ASSERT_EQ(front.messages.size(), 1u);
    EXPECT_EQ(front.messages[0],
              "I cannot continue with this selected 'minimum area' for the offsets, as with these "
              "offset positions there is no image. | Change the area from the 'minimum'. | 1");
    EXPECT_EQ(count("hide montage"), 1);
    EXPECT_EQ(count("preview"), 0);
    EXPECT_EQ(count("closed"), 0);
    EXPECT_EQ(front.log.back(), "idle");
    EXPECT_EQ(state.imageCount, 2);  // the pictures stay loaded
}

TEST_F(CreateImageOffsets, MaximumWithoutASizeEndsSilently) {
    const std::string name = path("z1.bmp");
    std::ofstream(name) << "x";
    front.pictures[name] = solid(0, 8, 1, 2, 3);
    mode(false, true, false);
    EXPECT_EQ(run(name), RunEnd::endedEarly);
    EXPECT_TRUE(front.messages.empty());
    EXPECT_EQ(count("preview"), 0);
    EXPECT_EQ(count("resized"), 0);
    EXPECT_EQ(front.log.back(), "idle");
}

TEST_F(CreateImageOffsets, MarkBeyondSixteenBitsIsAGeneralMessage) {
    makeSeries(1);
    mode(false, false, true);
    front.marks[1] = {13, 40000};
    EXPECT_EQ(run(path("s1.bmp")), RunEnd::stopped);
    ASSERT_EQ(front.messages.size(), 1u);
    EXPECT_EQ(front.messages[0],
              "error 6 (Overflow) at line 21050 of CommandGo | Nobody's Perfect | 1");
}

}  // namespace
}  // namespace lumiquilt
