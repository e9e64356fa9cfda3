#include "series/image_offsets.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/runtime_error.h"

namespace lumiquilt {
namespace {

TEST(OffsetMode, ChecksAreReadMinimumMaximumSame) {
    struct Row {
        bool add, min, max, same;
        OffsetMode mode;
    };
    const Row rows[] = {
        {false, true, true, true, OffsetMode::off},
        {true, false, false, false, OffsetMode::off},
        {true, true, true, true, OffsetMode::minimum},
        {true, false, true, true, OffsetMode::maximum},
        {true, false, false, true, OffsetMode::same},
    };
    for (const Row& r : rows) {
        EXPECT_EQ(offsetModeFrom(r.add, r.min, r.max, r.same), r.mode)
            << r.add << r.min << r.max << r.same;
    }
}

// A state of `images` images of width by height, with the window frames of the
// window program.
ProgramState stateWith(float width, float height, int images) {
    ProgramState s;
    s.imageCount = static_cast<int16_t>(images);
    s.imageWidth = width;
    s.imageHeight = height;
    s.sizingFrameHeight = 4;
    s.captionHeight = 23;
    s.dialogFrameHeight = 3;
    s.twipsPerPixel = 15;
    return s;
}

void collect(ProgramState& s, const std::vector<MarkCentre>& centres) {
    collectTargetCentres(s, [&](int k) { return centres.at(static_cast<size_t>(k - 1)); });
}

TEST(CollectTargetCentres, StartValuesStandAsTheyAre) {
    struct Row {
        const char* name;
        std::vector<MarkCentre> centres;
        int16_t minX, maxX, minY, maxY;
    };
    const Row rows[] = {
        {"design place", {{13, 13}, {13, 13}}, 13, 13, 13, 13},
        {"one image sets both extremes", {{40, 7}}, 40, 40, 7, 7},
        {"beyond 999 never lowers the minimum", {{1200, 1500}, {1300, 1400}}, 999, 1300, 999, 1500},
        {"below 0 never raises the maximum", {{-5, -9}, {-20, -1}}, -20, 0, -9, 0},
        {"halves go to the even neighbour", {{12.5, 13.5}, {15.5, 16.5}}, 12, 16, 14, 16},
    };
    for (const Row& r : rows) {
        ProgramState s = stateWith(100, 80, static_cast<int>(r.centres.size()));
        collect(s, r.centres);
        EXPECT_EQ(s.offsetMinX, r.minX) << r.name;
        EXPECT_EQ(s.offsetMaxX, r.maxX) << r.name;
        EXPECT_EQ(s.offsetMinY, r.minY) << r.name;
        EXPECT_EQ(s.offsetMaxY, r.maxY) << r.name;
    }
}

TEST(CollectTargetCentres, IgnoredImageCountsForNothingAndKeepsItsOldValues) {
    ProgramState s = stateWith(100, 80, 12);
    s.offsetX(2) = 77;
    s.offsetY(2) = 66;
    s.ignoredImage[1] = true;
    std::vector<MarkCentre> centres(12, MarkCentre{20, 30});
    centres[1] = {500, 600};  // far off, but ignored
    centres[11] = {25, 31};   // image 12 has no ignore entry and always counts
    std::vector<int> asked;
    collectTargetCentres(s, [&](int k) {
        asked.push_back(k);
        return centres.at(static_cast<size_t>(k - 1));
    });
    EXPECT_EQ(std::count(asked.begin(), asked.end(), 2), 0);
    EXPECT_EQ(s.offsetX(2), 77);
    EXPECT_EQ(s.offsetY(2), 66);
    EXPECT_EQ(s.offsetMaxX, 25);
    EXPECT_EQ(s.offsetMaxY, 31);
    EXPECT_EQ(s.offsetX(12), 25);
}

TEST(CollectTargetCentres, CentreBeyondSixteenBitsIsAnOverflow) {
    ProgramState s = stateWith(100, 80, 1);
    try {
        collect(s, {{40000, 5}});
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), 6);
    }
}

struct ModeRow {
    const char* name;
    OffsetMode mode;
    float width, height;
    std::vector<MarkCentre> centres;
    float newWidth, newHeight;
    int16_t baseX, baseY, rowShift;
    bool resize = true;
    OffsetOutcome outcome = OffsetOutcome::aligned;
    friend void PrintTo(const ModeRow& row, std::ostream* os) { *os << row.name; }
};

class ModeTable : public ::testing::TestWithParam<ModeRow> {};

TEST_P(ModeTable, GivesBasesShiftAndSize) {
    const ModeRow& r = GetParam();
    ProgramState s = stateWith(r.width, r.height, static_cast<int>(r.centres.size()));
    collect(s, r.centres);
    const OffsetStep step = applyOffsetMode(s, r.mode, r.width, r.height);
    EXPECT_EQ(step.outcome, r.outcome);
    EXPECT_EQ(s.imageWidth, r.newWidth);
    EXPECT_EQ(s.imageHeight, r.newHeight);
    if (r.outcome == OffsetOutcome::aligned) {
        EXPECT_EQ(s.offsetBaseX, r.baseX);
        EXPECT_EQ(s.offsetBaseY, r.baseY);
        EXPECT_EQ(step.rowShift, r.rowShift);
        EXPECT_EQ(step.resizeMontage, r.resize);
    }
}

ModeRow aligned(const char* name, OffsetMode mode, float width, float height,
                std::vector<MarkCentre> centres, float newWidth, float newHeight, int16_t baseX,
                int16_t baseY, int16_t rowShift, bool resize = true) {
    return {name,  mode,  width,    height, std::move(centres),    newWidth, newHeight,
            baseX, baseY, rowShift, resize, OffsetOutcome::aligned};
}

ModeRow ended(const char* name, OffsetMode mode, float width, float height,
              std::vector<MarkCentre> centres, float newWidth, float newHeight,
              OffsetOutcome outcome) {
    return {name, mode, width, height, std::move(centres), newWidth, newHeight, 0,
            0,    0,    false, outcome};
}

INSTANTIATE_TEST_SUITE_P(
    Offsets, ModeTable,
    ::testing::Values(aligned("MinimumRoundsDownToFour", OffsetMode::minimum, 801, 601,
                              {{13, 13}, {13, 13}}, 800, 600, 13, 13, 0),
                      aligned("MaximumAddsThreeFirst", OffsetMode::maximum, 801, 601,
                              {{13, 13}, {13, 13}}, 804, 604, 13, 13, 0),
                      aligned("MinimumKeepsAMultipleOfFour", OffsetMode::minimum, 800, 600,
                              {{13, 13}}, 800, 600, 13, 13, 0),
                      aligned("MaximumKeepsAMultipleOfFour", OffsetMode::maximum, 800, 600,
                              {{13, 13}}, 800, 600, 13, 13, 0),
                      aligned("MinimumSpreadTenOnAHundred", OffsetMode::minimum, 100, 80,
                              {{13, 20}, {23, 26}}, 88, 72, 13, 20, 6),
                      aligned("MaximumSpreadTenOnAHundred", OffsetMode::maximum, 100, 80,
                              {{13, 20}, {23, 26}}, 112, 88, 23, 26, -6),
                      aligned("SameKeepsTheSize", OffsetMode::same, 100, 80, {{13, 20}, {23, 26}},
                              100, 80, 13, 20, 0, false),
                      // 0 still makes a window of its frame: the run goes on with an empty montage.
                      aligned("MinimumEmptyButAWindow", OffsetMode::minimum, 20, 80,
                              {{13, 20}, {33, 20}}, 0, 80, 13, 20, 0),
                      // Every centre beyond 999 in X: the minimum stays at 999 and the width grows.
                      aligned("MinimumWithCentresBeyondTheStart", OffsetMode::minimum, 2000, 80,
                              {{1500, 20}, {1500, 20}}, 1496, 80, 999, 20, 0),
                      ended("MinimumNothingLeft", OffsetMode::minimum, 20, 80, {{13, 20}, {41, 20}},
                            -8, 80, OffsetOutcome::noMinimumArea),
                      ended("MaximumNoSize", OffsetMode::maximum, 0, 80, {{13, 20}}, 0, 80,
                            OffsetOutcome::noMaximumSize)),
    [](const ::testing::TestParamInfo<ModeRow>& info) { return std::string(info.param.name); });

TEST(OffsetModeSize, ChangesOnlyFromPictureOnesSizeAndBelowPassTwo) {
    const std::vector<MarkCentre> spread = {{13, 13}, {23, 13}};
    // A second minimum run starts from the reloaded full size and ends where the first did.
    for (int run = 0; run < 2; ++run) {
        ProgramState s = stateWith(100, 80, 2);
        collect(s, spread);
        applyOffsetMode(s, OffsetMode::minimum, 100, 80);
        EXPECT_EQ(s.imageWidth, 88) << run;
    }
    // The size already shrunk no longer equals picture 1's: it stays.
    ProgramState s = stateWith(88, 80, 2);
    collect(s, spread);
    applyOffsetMode(s, OffsetMode::minimum, 100, 80);
    EXPECT_EQ(s.imageWidth, 88);
    applyOffsetMode(s, OffsetMode::maximum, 100, 80);
    EXPECT_EQ(s.imageWidth, 88);
    // An evaluation pass of 2 or more neither shrinks nor restores.
    for (int pass : {1, 2, 3}) {
        ProgramState p = stateWith(100, 80, 2);
        p.evaluationPass = static_cast<int16_t>(pass);
        collect(p, spread);
        applyOffsetMode(p, OffsetMode::minimum, 100, 80);
        EXPECT_EQ(p.imageWidth, pass < 2 ? 88 : 100) << pass;
    }
}

TEST(OffsetModeSize, NegativeSizeInsideTheFrameIsAnInvalidProperty) {
    // -4 and a 4-pixel frame pass the area test; the montage can't take that width.
    ProgramState s = stateWith(20, 80, 2);
    collect(s, {{13, 20}, {37, 20}});
    try {
        applyOffsetMode(s, OffsetMode::minimum, 20, 80);
        FAIL();
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.number(), 380);
        EXPECT_EQ(e.description(), "Invalid property value");
    }
}

TEST(OffsetModeSize, NoWindowFramesMakeZeroWidthNoArea) {
    // Without window frames (the command-line tool) a width of 0 or less is no area.
    ProgramState s;
    s.imageCount = 2;
    s.imageWidth = 20;
    s.imageHeight = 20;
    collect(s, {{13, 13}, {33, 13}});
    EXPECT_EQ(applyOffsetMode(s, OffsetMode::minimum, 20, 20).outcome,
              OffsetOutcome::noMinimumArea);
    EXPECT_EQ(s.imageWidth, 0);
}

TEST(OffsetModeOff, ClearsEverything) {
    ProgramState s = stateWith(100, 80, 3);
    collect(s, {{13, 20}, {23, 26}, {40, 1}});
    applyOffsetMode(s, OffsetMode::minimum, 100, 80);
    ASSERT_EQ(s.imageWidth, 72);  // spread 27
    const OffsetStep step = applyOffsetMode(s, OffsetMode::off, 100, 80);
    EXPECT_EQ(step.rowShift, 0);
    EXPECT_EQ(s.offsetBaseX, 0);
    EXPECT_EQ(s.offsetBaseY, 0);
    for (int k = 0; k < kImageSlots; ++k) {
        EXPECT_EQ(s.offsetX(k), 0);
        EXPECT_EQ(s.offsetY(k), 0);
    }
    EXPECT_EQ(s.imageWidth, 72);  // the size is the run's to set, not this step's
}

TEST(TargetStatusText, FiveBlanksFirstAndFourBetween) {
    EXPECT_EQ(targetStatusText({}), " ");
    EXPECT_EQ(targetStatusText({{1, {13, 13}}}), "     Image 1 = 13 , 13");
    EXPECT_EQ(targetStatusText({{1, {13, 13}}, {12, {-5, 1234}}}),
              "     Image 1 = 13 , 13    Image 12 = -5 , 1234");
}

}  // namespace
}  // namespace lumiquilt
