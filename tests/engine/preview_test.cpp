// The preview's arithmetic: scales, nearest-neighbour sampling, and the rows a run
// draws while it builds a montage.
#include "engine/preview.h"

#include <gtest/gtest.h>

#include "engine/montage_run.h"
#include "engine_fixtures.h"

namespace lumiquilt {
namespace {

using testing::makeState;
using testing::setPixel;

constexpr int kFrame = 160;  // the preview frame at 15 twips to the pixel

TEST(PreviewScale, SourceCoordinates) {
    const float wide = previewReduce(159, 639);
    const float small = previewReduce(159, 39);
    const struct {
        const char* name;
        float reduce;
        int16_t sourceMax;
        int p;
        int expected;
    } rows[] = {
        {"640 wide: the last preview column shows the last column", wide, 639, 159, 639},
        {"480 high: the last preview row shows the last row", previewReduce(159, 479), 479, 159,
         479},
        {"the first shows the first", wide, 639, 0, 0},
        {"a middle column", wide, 639, 80, 322},  // 80 / (159 / 639) = 321.5..., up
        {"a smaller picture repeats its pixels", small, 39, 4, 1},
        {"and reaches its last one", small, 39, 159, 39},
        {"the preview's own size maps one to one", previewReduce(159, 159), 159, 77, 77},
        // A scale of 2: p / 2 lies on a half for every odd p.
        {"half to even 1", 2.0f, 100, 1, 0},
        {"half to even 3", 2.0f, 100, 3, 2},
        {"half to even 5", 2.0f, 100, 5, 2},
        {"half to even 7", 2.0f, 100, 7, 4},
        {"half to even 9", 2.0f, 100, 9, 4},
        {"a whole quotient", 2.0f, 100, 2, 1},
        {"never past the source's bound", 0.1f, 639, 159, 639},
        {"no scale", 0.0f, 639, 5, 0},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(previewSource(r.p, r.reduce, r.sourceMax), r.expected) << r.name;
    }
}

// A source whose pixel (x, y) tells its place: red x, green y.
void paintCoordinates(ProgramState& s, int picture, int width, int height) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            setPixel(s, picture, x, y, x % 256, y % 256, 7);
        }
    }
}

TEST(ReducePicture, SamplesTheNearestPixelRowByRow) {
    struct Row {
        const char* name;
        int width;
        int height;
    };
    for (const Row& r : {Row{"640 by 480", 640, 480}, Row{"smaller than the frame", 40, 30},
                         Row{"taller than wide", 60, 250}}) {
        ProgramState s = makeState(r.width, r.height, 2);
        paintCoordinates(s, 2, r.width, r.height);
        s.buffers.sizePreview(kFrame, kFrame);
        std::vector<int> rows;
        ASSERT_TRUE(reducePicture(s.buffers, 2, [&](int py) { rows.push_back(py); })) << r.name;
        ASSERT_EQ(rows.size(), static_cast<size_t>(kFrame)) << r.name;
        EXPECT_EQ(rows.front(), 0);  // from the bottom up
        EXPECT_EQ(rows.back(), kFrame - 1);
        const float rx = previewReduce(s.buffers.previewMaxX, s.buffers.seriesMaxX);
        const float ry = previewReduce(s.buffers.previewMaxY, s.buffers.seriesMaxY);
        for (int py : {0, 1, 79, 158, 159}) {
            for (int px : {0, 3, 80, 159}) {
                const uint8_t* p = s.buffers.previewPixels.data() + (py * kFrame + px) * 3;
                const int sx = previewSource(px, rx, s.buffers.seriesMaxX);
                const int sy = previewSource(py, ry, s.buffers.seriesMaxY);
                EXPECT_EQ(p[2], s.buffers.redAt(sx, sy, 2)) << r.name << " " << px << "," << py;
                EXPECT_EQ(p[1], s.buffers.greenAt(sx, sy, 2)) << r.name << " " << px << "," << py;
            }
        }
    }
}

// Runs the block loop with the progress preview behind it, as a run does; gives the
// preview rows drawn in order.
std::vector<int> progressRows(ProgramState& s, int increment) {
    s.increment = static_cast<int16_t>(increment);
    s.buffers.sizePreview(kFrame, kFrame);
    PreviewProgress progress;
    progress.start();
    std::vector<int> drawn;
    runBlockLoop(s, 0, [&](int16_t y0) {
        if (progress.row(s.buffers, y0)) {
            drawn.push_back(progress.lastRow());
        }
    });
    return drawn;
}

TEST(PreviewProgress, AtMostOnePaintForEachPreviewRow) {
    struct Row {
        const char* name;
        int width;
        int height;
        int increment;
        size_t paints;
    };
    const Row rows[] = {
        // 1000 block rows reach every one of the 160 preview rows once.
        {"tall picture, increment 1", 8, 1000, 1, 160},
        // The block row at y0 = 480 has no buffer row: 480 / 10 = 48 rows drawn.
        {"height a multiple of the increment", 640, 480, 10, 48},
        {"height a multiple of four and of the increment", 40, 32, 8, 4},
        {"a low picture", 40, 4, 4, 1},
        {"an increment above the picture", 40, 30, 100, 1},
    };
    for (const Row& r : rows) {
        ProgramState s = makeState(r.width, r.height, 1);
        const std::vector<int> drawn = progressRows(s, r.increment);
        EXPECT_EQ(drawn.size(), r.paints) << r.name;
        for (size_t i = 0; i < drawn.size(); ++i) {
            EXPECT_GE(drawn[i], 0) << r.name;
            EXPECT_LE(drawn[i], s.buffers.previewMaxY) << r.name;
            if (i > 0) {
                EXPECT_GT(drawn[i], drawn[i - 1]) << r.name;
            }
        }
    }
}

TEST(PreviewProgress, CopiesTheRowsFirstBufferRowOnly) {
    ProgramState s = makeState(320, 160, 1);
    for (int x = 0; x < 320; ++x) {
        setPixel(s, 100, x, 20, x % 251, 9, 9);
        setPixel(s, 100, x, 21, 0, 1, 1);
    }
    s.buffers.sizePreview(kFrame, kFrame);
    PreviewProgress progress;
    progress.start();
    ASSERT_TRUE(progress.row(s.buffers, 20));
    const int row = progress.lastRow();
    EXPECT_EQ(row, 20);  // 20 * 159 / 159
    const float rx = previewReduce(s.buffers.previewMaxX, s.buffers.montageMaxX);
    for (int px = 0; px < kFrame; ++px) {
        const uint8_t* p = s.buffers.previewPixels.data() + (row * kFrame + px) * 3;
        EXPECT_EQ(p[2], previewSource(px, rx, s.buffers.montageMaxX) % 251) << px;
    }
    // The row above it in the preview stays as it was: cleared.
    const uint8_t* above = s.buffers.previewPixels.data() + ((row + 1) * kFrame) * 3;
    EXPECT_EQ(above[1], 0);
}

}  // namespace
}  // namespace lumiquilt
