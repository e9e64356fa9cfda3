// The Create Image road driven by a scripted front end: no Qt, no windows.
#include "engine/create_image.h"

#include <gtest/gtest.h>

#include "support/engine_scripted_front.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedRoadTest;

class CreateImageRoad : public ScriptedRoadTest {
  public:
    void SetUp() override {
        ScriptedRoadTest::SetUp();
        front.chosen.incrementText = "4";
        front.chosen.methodChecked[0] = true;
    }
    RunEnd run(const std::string& first) {
        front.fileName = first;
        return createImage(state, front);
    }
    void offsets(bool min, bool max, bool same) {
        front.chosen.addOffsets = true;
        front.chosen.offsetsMin = min;
        front.chosen.offsetsMax = max;
        front.chosen.offsetsSame = same;
    }
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
    EXPECT_EQ(state.buffers.montageSlot(100)[2], 60);
    // The field returns to what was typed; the report names it too.
    EXPECT_EQ(front.fileName, "s1");
    EXPECT_NE(state.propertiesString.find("First file name =s1\r\n"), std::string::npos);
}

struct EarlyExit {
    const char* name;
    std::function<void(CreateImageRoad&)> prepare;
    const char* first;
    RunEnd end;
    const char* message;  // "text | title | icon" of the one message, or "" for none
    int imageCount;
    bool closed;  // the closing steps ran
    std::function<void(CreateImageRoad&)> check = nullptr;
};

class CreateImageEarlyExit : public CreateImageRoad,
                             public ::testing::WithParamInterface<EarlyExit> {};

TEST_P(CreateImageEarlyExit, EndsAsTheRoadSays) {
    const EarlyExit& row = GetParam();
    row.prepare(*this);
    EXPECT_EQ(run(row.first), row.end);
    if (*row.message == '\0') {
        EXPECT_TRUE(front.messages.empty());
    } else {
        EXPECT_EQ(front.messages, std::vector<std::string>{row.message});
    }
    EXPECT_EQ(state.imageCount, row.imageCount);
    EXPECT_EQ(front.count("closed"), row.closed ? 1 : 0);
    // Busy is always undone, and nothing is drawn after an early exit; only the offset
    // step comes after the windows are arranged.
    EXPECT_EQ(front.log.back(), row.closed ? "closed" : "idle");
    if (row.end != RunEnd::completed) {
        EXPECT_EQ(front.count("arrange"), front.chosen.addOffsets ? 1 : 0);
        for (const char* stage : {"preview", "resized", "show"}) {
            EXPECT_EQ(front.count(stage), 0) << stage;
        }
    }
    if (row.check) {
        row.check(*this);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Road, CreateImageEarlyExit,
    ::testing::Values(
        EarlyExit{"NoDigit", [](CreateImageRoad&) {}, "scene.bmp", RunEnd::endedEarly,
                  "You must have a number as the last letter in the file name,  eg "
                  "c:\\thisdirectory\\myfile1.bmp, or c:\\myotherfile6 | Rename the file and try "
                  "again | 1",
                  0, false,
                  // The field keeps the name completed with the program's folder.
                  [](CreateImageRoad& t) { EXPECT_EQ(t.front.fileName, t.path("scene.bmp")); }},
        EarlyExit{"MissingFile", [](CreateImageRoad&) {}, "s1.bmp", RunEnd::endedEarly,
                  "So very sorry, but I can't find that file. | roll the dice again | 3", 0, false},
        EarlyExit{
            "FirstNumberTooLarge",
            [](CreateImageRoad& t) { std::ofstream(t.path("s99999.bmp")) << "x"; }, "s99999.bmp",
            RunEnd::endedEarly,
            "The number in the file name is too large: a series can start from a number of at "
            "most 32767. | Rename the file and try again | 1",
            0, false},
        EarlyExit{"IncrementOverflow",
                  [](CreateImageRoad& t) {
                      t.makeSeries(1);
                      t.front.chosen.incrementText = "40000";
                  },
                  "s1.bmp", RunEnd::stopped,
                  "error 6 (Overflow) at line 1000 of CommandGo | Nobody's Perfect | 1", 0, true},
        EarlyExit{"InvalidPicture",
                  [](CreateImageRoad& t) {
                      t.makeSeries(2);
                      std::ofstream(t.path("s3.bmp")) << "no picture";
                  },
                  "s1.bmp", RunEnd::stopped,
                  "This is not a valid picture file that I can read. | Try a different format | 1",
                  2, true,
                  // The field returns to what was typed.
                  [](CreateImageRoad& t) { EXPECT_EQ(t.front.fileName, "s1.bmp"); }},
        EarlyExit{"ImageOfAnotherSize",
                  [](CreateImageRoad& t) {
                      t.makeSeries(2);
                      t.front.pictures[t.path("s2.bmp")] = {16, 10, std::vector<uint8_t>(480)};
                  },
                  "s1.bmp", RunEnd::completed,
                  "Image 2 has a different dimension (16,10) from Image 1 (12,8).   All images "
                  "must be the same size. | You can edit each picture to the same size | 1",
                  2, true,
                  // The montage takes image 1's size; ignoring image 2 silences the message.
                  [](CreateImageRoad& t) {
                      EXPECT_EQ(t.state.imageWidth, 12);
                      t.front.messages.clear();
                      t.front.chosen.ignored[1] = true;
                      EXPECT_EQ(t.run("s1.bmp"), RunEnd::completed);
                      EXPECT_TRUE(t.front.messages.empty());
                  }},
        EarlyExit{"ThirtyPictureLimit", [](CreateImageRoad& t) { t.makeSeries(31); }, "s1.bmp",
                  RunEnd::completed,
                  "I can only cope with  30 pictures, so I will use the first ones. | No wuckas "
                  "mate | 1",
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
                  "s1.bmp", RunEnd::completed, "", 2, true},
        // The minimum area leaves nothing of 12 - 40; the pictures stay loaded.
        EarlyExit{"MinimumAreaWithNothingLeft",
                  [](CreateImageRoad& t) {
                      t.makeSeries(2);
                      t.offsets(true, false, false);
                      t.front.marks[2] = {13 + 40, 13};
                      t.state.sizingFrameHeight = 4;
                  },
                  "s1.bmp", RunEnd::endedEarly,
                  "I cannot continue with this selected 'minimum area' for the offsets, as with "
                  "these offset positions there is no image. | Change the area from the "
                  "'minimum'. | 1",
                  2, false,
                  [](CreateImageRoad& t) { EXPECT_EQ(t.front.count("hide montage"), 1); }},
        EarlyExit{"MaximumAreaWithoutASize",
                  [](CreateImageRoad& t) {
                      std::ofstream(t.path("s1.bmp")) << "x";
                      t.front.pictures[t.path("s1.bmp")] = {0, 8, {}};
                      t.offsets(false, true, false);
                  },
                  "s1.bmp", RunEnd::endedEarly, "", 1, false},
        EarlyExit{"MarkBeyondSixteenBits",
                  [](CreateImageRoad& t) {
                      t.makeSeries(1);
                      t.offsets(false, false, true);
                      t.front.marks[1] = {13, 40000};
                  },
                  "s1.bmp", RunEnd::stopped,
                  "error 6 (Overflow) at line 21050 of CommandGo | Nobody's Perfect | 1", 1, true}),
    [](const ::testing::TestParamInfo<EarlyExit>& info) { return std::string(info.param.name); });

// While a new series loads, the last one's buffer is free for it to take, and
// nothing given back is kept once the run is over.
TEST_F(CreateImageRoad, ANewSeriesTakesTheMemoryOfTheLast) {
    makeSeries(3, 400, 400);
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::completed);
    const uint8_t* last = state.buffers.seriesPixels.data();
    const std::size_t lastBytes = state.buffers.seriesPixels.size();
    ASSERT_NE(last, nullptr);
    // While the members load, the last buffer is out of the state and kept for them.
    std::vector<const uint8_t*> whileLoading;
    std::vector<bool> keptWhileLoading;
    front.afterLoad = [&](int) {
        whileLoading.push_back(state.buffers.seriesPixels.data());
        keptWhileLoading.push_back(SampleBuffer::spares() >= lastBytes);
    };
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_EQ(whileLoading, std::vector<const uint8_t*>(3, nullptr));
    EXPECT_EQ(keptWhileLoading, std::vector<bool>(3, true));
    EXPECT_EQ(state.buffers.seriesPixels.data(), last);
    EXPECT_EQ(SampleBuffer::spares(), 0u);

    // A buffer the new series leaves is not kept on beside the montage.
    makeSeries(3, 300, 400);
    front.afterLoad = nullptr;
    std::size_t keptAtTheMontage = 1;
    front.onShow = [&] { keptAtTheMontage = SampleBuffer::spares(); };
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::completed);
    EXPECT_EQ(keptAtTheMontage, 0u);

    // A run that ends in the loading loop gives the last buffer back too.
    front.pictures.erase(path("s2.bmp"));
    ASSERT_EQ(run(path("s1.bmp")), RunEnd::stopped);
    EXPECT_EQ(state.buffers.seriesPixels.data(), nullptr);
    EXPECT_EQ(SampleBuffer::spares(), 0u);
}

}  // namespace
}  // namespace lumiquilt
