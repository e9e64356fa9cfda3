#include "series/image_offsets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "support/series_error_of.h"

namespace lumiquilt {
namespace {

using testing::errorOf;

TEST(OffsetMode, ChecksAreReadMinimumMaximumSame) {
    const struct {
        bool add, min, max, same;
        OffsetMode mode;
    } rows[] = {
        {false, true, true, true, OffsetMode::off},
        {true, false, false, false, OffsetMode::off},
        {true, true, true, true, OffsetMode::minimum},
        {true, false, true, true, OffsetMode::maximum},
        {true, false, false, true, OffsetMode::same},
    };
    for (const auto& r : rows) {
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
    const struct {
        const char* name;
        std::vector<MarkCentre> centres;
        int16_t minX, maxX, minY, maxY;
    } rows[] = {
        {"design place", {{13, 13}, {13, 13}}, 13, 13, 13, 13},
        {"one image sets both extremes", {{40, 7}}, 40, 40, 7, 7},
        {"beyond 999 never lowers the minimum", {{1200, 1500}, {1300, 1400}}, 999, 1300, 999, 1500},
        {"below 0 never raises the maximum", {{-5, -9}, {-20, -1}}, -20, 0, -9, 0},
        {"halves go to the even neighbour", {{12.5, 13.5}, {15.5, 16.5}}, 12, 16, 14, 16},
    };
    for (const auto& r : rows) {
        ProgramState s = stateWith(100, 80, static_cast<int>(r.centres.size()));
        collect(s, r.centres);
        EXPECT_EQ(std::tie(s.offsetMinX, s.offsetMaxX, s.offsetMinY, s.offsetMaxY),
                  std::tie(r.minX, r.maxX, r.minY, r.maxY))
            << r.name;
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

TEST(ApplyOffsetMode, GivesBasesShiftAndSize) {
    constexpr auto minimum = OffsetMode::minimum, maximum = OffsetMode::maximum,
                   same = OffsetMode::same;
    constexpr auto on = OffsetOutcome::aligned, noArea = OffsetOutcome::noMinimumArea,
                   noSize = OffsetOutcome::noMaximumSize;
    const struct {
        const char* name;
        OffsetMode mode;
        float width, height, newWidth, newHeight;
        int16_t baseX, baseY, rowShift;
        OffsetOutcome outcome;
        std::vector<MarkCentre> centres;
        bool windowFrames = true;
    } rows[] = {
        {"minimum rounds down", minimum, 801, 601, 800, 600, 13, 13, 0, on, {{13, 13}, {13, 13}}},
        {"maximum adds 3 first", maximum, 801, 601, 804, 604, 13, 13, 0, on, {{13, 13}, {13, 13}}},
        {"minimum keeps a multiple of 4", minimum, 800, 600, 800, 600, 13, 13, 0, on, {{13, 13}}},
        {"maximum keeps a multiple of 4", maximum, 800, 600, 800, 600, 13, 13, 0, on, {{13, 13}}},
        {"minimum spread ten", minimum, 100, 80, 88, 72, 13, 20, 6, on, {{13, 20}, {23, 26}}},
        {"maximum spread ten", maximum, 100, 80, 112, 88, 23, 26, -6, on, {{13, 20}, {23, 26}}},
        {"same keeps the size", same, 100, 80, 100, 80, 13, 20, 0, on, {{13, 20}, {23, 26}}},
        // 0 still makes a window of its frame: the run goes on with an empty montage.
        {"minimum empty but a window", minimum, 20, 80, 0, 80, 13, 20, 0, on, {{13, 20}, {33, 20}}},
        // Every centre beyond 999 in X: the minimum stays at 999 and the width grows.
        {"beyond 999", minimum, 2000, 80, 1496, 80, 999, 20, 0, on, {{1500, 20}, {1500, 20}}},
        {"minimum nothing left", minimum, 20, 80, -8, 80, 0, 0, 0, noArea, {{13, 20}, {41, 20}}},
        {"maximum no size", maximum, 0, 80, 0, 80, 0, 0, 0, noSize, {{13, 20}}},
        // Without window frames (the command-line tool) a width of 0 is no area.
        {"no frames", minimum, 20, 20, 0, 20, 0, 0, 0, noArea, {{13, 13}, {33, 13}}, false},
    };
    for (const auto& r : rows) {
        ProgramState s = stateWith(r.width, r.height, static_cast<int>(r.centres.size()));
        if (!r.windowFrames) {
            s.sizingFrameHeight = s.captionHeight = s.dialogFrameHeight = 0;
        }
        collect(s, r.centres);
        const OffsetStep step = applyOffsetMode(s, r.mode, r.width, r.height);
        EXPECT_EQ(step.outcome, r.outcome) << r.name;
        EXPECT_EQ(s.imageWidth, r.newWidth) << r.name;
        EXPECT_EQ(s.imageHeight, r.newHeight) << r.name;
        if (r.outcome == on) {
            EXPECT_EQ(s.offsetBaseX, r.baseX) << r.name;
            EXPECT_EQ(s.offsetBaseY, r.baseY) << r.name;
            EXPECT_EQ(step.rowShift, r.rowShift) << r.name;
            // Minimum and maximum size the montage window anew.
            EXPECT_EQ(step.resizeMontage, r.mode != same) << r.name;
        }
    }
}

TEST(OffsetModeSize, ChangesOnlyFromPictureOnesSizeAndBelowPassTwo) {
    // The width that the modes leave, from a width, an evaluation pass and a spread of 10.
    const auto widthAfter = [](float width, int pass, std::initializer_list<OffsetMode> modes) {
        ProgramState s = stateWith(width, 80, 2);
        s.evaluationPass = static_cast<int16_t>(pass);
        collect(s, {{13, 13}, {23, 13}});
        for (const OffsetMode mode : modes) {
            applyOffsetMode(s, mode, 100, 80);
        }
        return s.imageWidth;
    };
    // A second minimum run starts from the reloaded full size and ends where the first did.
    EXPECT_EQ(widthAfter(100, 0, {OffsetMode::minimum}), 88);
    // The size already shrunk no longer equals picture 1's: it stays.
    EXPECT_EQ(widthAfter(88, 0, {OffsetMode::minimum}), 88);
    EXPECT_EQ(widthAfter(88, 0, {OffsetMode::minimum, OffsetMode::maximum}), 88);
    // An evaluation pass of 2 or more neither shrinks nor restores.
    EXPECT_EQ(widthAfter(100, 1, {OffsetMode::minimum}), 88);
    EXPECT_EQ(widthAfter(100, 2, {OffsetMode::minimum}), 100);
    EXPECT_EQ(widthAfter(100, 3, {OffsetMode::minimum}), 100);
}

TEST(OffsetModeSize, NegativeSizeInsideTheFrameIsAnInvalidProperty) {
    // -4 and a 4-pixel frame pass the area test; the montage can't take that width.
    ProgramState s = stateWith(20, 80, 2);
    collect(s, {{13, 20}, {37, 20}});
    EXPECT_EQ(errorOf([&] { applyOffsetMode(s, OffsetMode::minimum, 20, 80); }), 380);
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

}  // namespace
}  // namespace lumiquilt
