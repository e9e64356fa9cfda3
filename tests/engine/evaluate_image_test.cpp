#include "engine/evaluate_image.h"

#include <gtest/gtest.h>

#include <cmath>

#include "engine_fixtures.h"

namespace lumiquilt {
namespace {

using testing::makeState;
using testing::setPixel;

void fillMontage(ProgramState& s, int w, int h, int red, int green, int blue) {
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            setPixel(s, 100, x, y, red, green, blue);
        }
    }
}

TEST(EvaluateImage, FlatPicturesAndIncrementsAtLeastThePictureScoreZero) {
    ProgramState s = makeState(40, 30, 1);
    fillMontage(s, 40, 30, 90, 120, 200);
    for (int inc : {1, 9, 10, 13}) {
        EXPECT_FLOAT_EQ(evaluateImage(s.buffers, 40, 30, static_cast<int16_t>(inc)), 0) << inc;
    }
    ProgramState t = makeState(20, 20, 1);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 20; ++x) {
            setPixel(t, 100, x, y, (x * 37 + y * 11) % 256, x * 5, y * 7);
        }
    }
    EXPECT_FLOAT_EQ(evaluateImage(t.buffers, 20, 20, 20), 0);
    EXPECT_FLOAT_EQ(evaluateImage(t.buffers, 20, 20, 25), 0);
    EXPECT_GT(evaluateImage(t.buffers, 20, 20, 10), 0);
}

TEST(EvaluateImage, SeamBetweenColumnsNineteenAndTwentyAtWidthTwentyOne) {
    // Width 21, increment 10: blocks at x = 0 and 10, the last seam between columns
    // 19 and 20. A jump at column 20 alone is seen; one at column 21 is not. One block
    // row (y = 0), two columns: 2 * 8 * 2 = 32 distances, 8 of them 50.
    for (const auto& [column, score] : {std::pair{20, 8 * 50.0f / 32}, std::pair{21, 0.0f}}) {
        ProgramState s = makeState(24, 11, 1);
        for (int y = 0; y < 11; ++y) {
            setPixel(s, 100, column, y, 30, 40, 0);  // distance 50 from black
        }
        EXPECT_FLOAT_EQ(evaluateImage(s.buffers, 21, 11, 10), score) << column;
    }
}

TEST(EvaluateImage, SamplesBeyondTheMontageAreBlack) {
    // A montage 8 wide scored as 13 wide at increment 4: blocks at x = 0, 4 and 8,
    // offsets {0, 1, 1, 2, 2, 3, 3, 4}. Only the right seam of block 4 pairs a pixel
    // inside (x 7) with one beyond (x 8): 8 distances of 50 among 3 * 16.
    ProgramState s = makeState(8, 5, 1);
    fillMontage(s, 8, 8, 30, 40, 0);
    EXPECT_FLOAT_EQ(evaluateImage(s.buffers, 13, 5, 4), 8 * 50.0f / 48);
}

TEST(EvaluateImage, IncrementNineSamplesTheEightInnerPositions) {
    // A vertical seam at x = 9 and a mark at row offsets 1..8 of the first block.
    ProgramState s = makeState(20, 20, 1);
    for (int y = 1; y <= 8; ++y) {
        setPixel(s, 100, 9, y, 3, 4, 0);  // distance 5 from the black column 8
    }
    // Blocks at (0,0), (0,9), (9,0), (9,9): the right seam of block (0,0) reads
    // P at x 8 and Q at x 9 on rows 1..8: 8 distances of 5; the top seams of (9,0)
    // read x 9+off, not column 9. Total count 4 blocks * 16.
    EXPECT_FLOAT_EQ(evaluateImage(s.buffers, 20, 20, 9), 8 * 5.0f / 64);
}

TEST(EvaluateImage, IncrementOneRepeatsSamplePositions) {
    // With inc 1 every offset is 0 or 1: each block reads its right neighbour at
    // rows y and y + 1. A checkerboard of black and white gives the same jump always.
    ProgramState s = makeState(4, 4, 1);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            const int v = ((x + y) % 2) * 255;
            setPixel(s, 100, x, y, v, v, v);
        }
    }
    const float jump = static_cast<float>(std::sqrt(3.0 * 255 * 255));
    // Offsets 0 (k = 1..4) sample across a seam; offsets 1 compare pixels in the
    // same row and column one further, also a jump on a checkerboard.
    EXPECT_NEAR(evaluateImage(s.buffers, 4, 4, 1), jump, 1e-3);
}

}  // namespace
}  // namespace lumiquilt
