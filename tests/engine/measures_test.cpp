#include "engine/measures.h"

#include <gtest/gtest.h>

#include "engine_fixtures.h"

namespace lumiquilt {
namespace {

using testing::fillImage;
using testing::makeState;

struct MeasureRow {
    const char* name;
    int r, g, b;
    std::array<float, 7> expected;
};

TEST(ExposureMeasure, WorkedExamples) {
    const MeasureRow rows[] = {
        {"200,100,50", 200, 100, 50, {-12788, 150, 300, 350, 55, 100, 50}},
        {"mid grey", 136, 136, 136, {0, 0, 0, 357, 136, 136, 136}},
        {"black", 0, 0, 0, {-55488, 0, 0, 0, 0, 0, 0}},
        {"white", 255, 255, 255, {-42483, 0, 0, 0, 0, 0, 0}},
        {"just past the pivot", 137, 137, 137, {-3, 0, 0, 354, 118, 118, 118}},
        {"t = 382", 127, 127, 128, {-226, 1, 2, 382, 127, 127, 128}},
        {"t = 383", 128, 127, 128, {-209, 1, 2, 382, 128, 127, 128}},
    };
    for (const auto& row : rows) {
        for (int m = 0; m < 7; ++m) {
            EXPECT_FLOAT_EQ(exposureMeasure(m, row.r, row.g, row.b), row.expected[m])
                << row.name << " method " << m;
        }
    }
    EXPECT_FLOAT_EQ(exposureMeasure(4, 119, 0, 0), 119);
    EXPECT_GT(exposureMeasure(4, 119, 0, 0), exposureMeasure(4, 137, 0, 0));
}

TEST(GotFocusMeasure, SampleAndSentinels) {
    ProgramState s = makeState(8, 8, 2, 4);
    fillImage(s, 1, 100, 0, 0);
    s.offsetX(2) = 3;  // image 2 samples 3 to the right and 2 lower than image 1
    s.offsetY(2) = 2;
    int16_t sx = 0, sy = 0;
    bool written = false;
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 1, 1, 1, sx, sy, written), 100);
    EXPECT_TRUE(written);
    EXPECT_EQ(sx, 1);
    EXPECT_EQ(sy, 1);

    // Marks count downward, rows upward: y 1 minus mark 2 lies below the bottom row.
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 1, 1, 2, sx, sy, written), kNoMeasure);
    EXPECT_TRUE(written);
    EXPECT_EQ(sx, 4);
    EXPECT_EQ(sy, -1);
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 1, 3, 2, sx, sy, written), 0);
    EXPECT_EQ(sy, 1);

    // Beyond the upper bounds reads as black, which scores, unlike below 0.
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 50, 50, 1, sx, sy, written), 0);

    // The first checked method counts; none checked gives the sentinel.
    s.methodChecked[6] = kTrue;
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 1, 1, 1, sx, sy, written), 100);
    s.methodChecked[4] = kFalse;
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 1, 1, 1, sx, sy, written), 0);  // blue 0
    s.methodChecked.fill(kFalse);
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 1, 1, 1, sx, sy, written), kNoMeasure);
}

TEST(GotFocusMeasure, ImagesAboveTenAreNeverIgnored) {
    ProgramState s = makeState(4, 4, 11, 4);
    s.ignoredImage.fill(true);
    fillImage(s, 11, 50, 0, 0);
    int16_t sx = 0, sy = 0;
    bool written = false;
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 0, 0, 10, sx, sy, written), kNoMeasure);
    EXPECT_FLOAT_EQ(gotFocusMeasure(s, 0, 0, 11, sx, sy, written), 50);
}

}  // namespace
}  // namespace lumiquilt
