#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "core/runtime_error.h"
#include "engine/measures.h"
#include "engine/montage_run.h"
#include "engine_fixtures.h"

namespace lumiquilt {
namespace {

using testing::fillImage;
using testing::makeState;
using testing::setPixel;

// Which image (by its red value 10 * k) a montage pixel came from; 0 for untouched.
int sourceOf(const ProgramState& s, int x, int y) {
    return s.buffers.redAt(x, y, 100) / 10;
}

TEST(CheckIncrementText, Table) {
    const std::pair<const char*, const char*> rows[] = {
        {"abc", "10"},      {"", "10"},
        {"0", "1"},         {"-3", "1"},
        {"0.4", "1"},       {"2.5", "2.5"},
        {"3.5", "3.5"},     {"20", "20"},
        {"99999", "99999"}, {"20 -resolution800x600", "10"},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(checkIncrementText(text), expected) << text;
    }
    EXPECT_EQ(incrementFromText("2.5"), 2);
    EXPECT_EQ(incrementFromText("3.5"), 4);
    EXPECT_EQ(incrementFromText("1"), 1);
}

TEST(BlockLoop, WinnerTakesTheWholeBlockAndTiesGoLow) {
    // Preference red: image k has red 10 * k everywhere, so image 3 wins by default.
    ProgramState s = makeState(8, 4, 3, 4);
    for (int k = 1; k <= 3; ++k) {
        fillImage(s, k, 10 * k, 0, 0);
    }
    setPixel(s, 1, 0, 0, 100, 0, 0);  // image 1's corner of block (0, 0) scores best
    setPixel(s, 2, 4, 0, 30, 0, 0);   // image 2 ties image 3 at block (4, 0)
    s.increment = 4;
    runBlockLoop(s, 0, nullptr);
    EXPECT_EQ(s.buffers.redAt(0, 0, 100), 100);
    EXPECT_EQ(s.buffers.redAt(4, 0, 100), 30);  // image 2's corner: it won the tie
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            if (x || y) {
                EXPECT_EQ(sourceOf(s, x, y), 1) << x << "," << y;
                EXPECT_EQ(sourceOf(s, x + 4, y), 2) << x + 4 << "," << y;
            }
        }
    }
}

TEST(BlockLoop, IgnoredImagesNeverWinAndAllIgnoredLeaveTheBlocksAlone) {
    for (const bool all : {false, true}) {
        ProgramState s = makeState(4, 4, 3, 4);
        fillImage(s, 1, 10, 0, 0);
        fillImage(s, 2, 100, 0, 0);  // the winner, but ignored
        fillImage(s, 3, 30, 0, 0);
        s.ignoredImage[1] = true;
        s.ignoredImage[0] = s.ignoredImage[2] = all;
        s.increment = 3;
        runBlockLoop(s, 0, nullptr);
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 4; ++x) {
                EXPECT_EQ(sourceOf(s, x, y), all ? 0 : 3) << x << "," << y << " all " << all;
            }
        }
    }
}

// A scene that pictures are cut from: every point has its own colour, never black,
// at any place, negative ones too.
struct ScenePixel {
    int red, green, blue;
    bool operator==(const ScenePixel&) const = default;
};

ScenePixel sceneAt(int x, int yDown) {
    const unsigned h =
        (static_cast<unsigned>(x) * 73856093u) ^ (static_cast<unsigned>(yDown) * 19349663u);
    return {static_cast<int>(h % 255) + 1, static_cast<int>((h >> 8) % 255) + 1,
            static_cast<int>((h >> 16) % 255) + 1};
}

// A series of width by height pictures; image k shows the scene moved right by
// shifts[k-1].x and down by shifts[k-1].y, and its mark sits on the scene point
// (20, 15), so a mark centre is (20 + dx, 15 + dy).
struct ShiftedSeries {
    ProgramState s;
    std::vector<MarkCentre> centres;
};

ShiftedSeries shiftedSeries(int width, int height, const std::vector<std::pair<int, int>>& shifts) {
    ShiftedSeries out{makeState(width, height, static_cast<int>(shifts.size()), 4), {}};
    for (size_t i = 0; i < shifts.size(); ++i) {
        const auto [dx, dy] = shifts[i];
        for (int yDown = 0; yDown < height; ++yDown) {
            for (int x = 0; x < width; ++x) {
                const ScenePixel p = sceneAt(x - dx, yDown - dy);
                setPixel(out.s, static_cast<int>(i) + 1, x, height - 1 - yDown, p.red, p.green,
                         p.blue);
            }
        }
        out.centres.push_back({20.0 + dx, 15.0 + dy});
    }
    return out;
}

struct ShiftRow {
    const char* name;
    OffsetMode mode;
    std::vector<std::pair<int, int>> shifts;
    int increment;
    int newWidth, newHeight;
    bool everyPixelCovered;
    friend void PrintTo(const ShiftRow& row, std::ostream* os) { *os << row.name; }
};

class ShiftedBlockLoop : public ::testing::TestWithParam<ShiftRow> {};

// Whichever image gives a block, the montage shows the scene at one place: the
// sample and the copy are shifted alike, and only real picture pixels are copied.
TEST_P(ShiftedBlockLoop, EveryCopiedPixelShowsTheSameScenePoint) {
    const ShiftRow& r = GetParam();
    const int width = 48;
    const int height = 40;
    ShiftedSeries series = shiftedSeries(width, height, r.shifts);
    ProgramState& s = series.s;
    collectTargetCentres(s, [&](int k) { return series.centres.at(static_cast<size_t>(k - 1)); });
    const OffsetStep step = applyOffsetMode(s, r.mode, width, height);
    ASSERT_EQ(step.outcome, OffsetOutcome::aligned);
    EXPECT_EQ(s.imageWidth, r.newWidth);
    EXPECT_EQ(s.imageHeight, r.newHeight);
    s.buffers.sizeMontage(static_cast<int>(s.imageWidth), static_cast<int>(s.imageHeight));
    s.increment = static_cast<int16_t>(r.increment);
    runBlockLoop(s, step.rowShift, nullptr);

    // The marks sit on scene point (20, 15): montage (x, y) shows the scene point
    // that lies (x - base, rows up from the picture's foot) away from it.
    const int x1 = 20;
    const int y1 = 15;
    int copied = 0;
    for (int y = 0; y <= s.buffers.montageMaxY; ++y) {
        for (int x = 0; x <= s.buffers.montageMaxX; ++x) {
            const ScenePixel got{s.buffers.redAt(x, y, 100), s.buffers.greenAt(x, y, 100),
                                 s.buffers.blueAt(x, y, 100)};
            const bool inside = x < r.newWidth && y < r.newHeight;
            if (got == ScenePixel{0, 0, 0}) {
                EXPECT_FALSE(r.everyPixelCovered && inside) << x << "," << y;
                continue;
            }
            ++copied;
            const ScenePixel want = sceneAt(x + x1 - s.offsetBaseX,
                                            height - 1 - y - step.rowShift - s.offsetBaseY + y1);
            ASSERT_EQ(got, want) << r.name << " at " << x << "," << y;
        }
    }
    EXPECT_GT(copied, r.newWidth * r.newHeight / 2);
}

INSTANTIATE_TEST_SUITE_P(
    Offsets, ShiftedBlockLoop,
    ::testing::Values(
        // Spread 7 across, 5 down: 48 - 7 = 41 -> 40, 40 - 5 = 35 -> 32.
        ShiftRow{"Minimum", OffsetMode::minimum, {{0, 0}, {3, -2}, {-4, 3}}, 8, 40, 32, true},
        ShiftRow{
            "MinimumByPixel", OffsetMode::minimum, {{0, 0}, {3, -2}, {-4, 3}}, 1, 40, 32, true},
        // 48 + 7 + 3 = 58 -> 56, 40 + 5 + 3 = 48.
        ShiftRow{"Maximum", OffsetMode::maximum, {{0, 0}, {3, -2}, {-4, 3}}, 8, 56, 48, false},
        ShiftRow{"MaximumLargeIncrement", OffsetMode::maximum, {{0, 0}, {9, 6}}, 50, 60, 48, false},
        ShiftRow{"Same", OffsetMode::same, {{0, 0}, {3, -2}, {-4, 3}}, 7, 48, 40, false},
        ShiftRow{"SameImageOneFarRight", OffsetMode::same, {{11, 9}, {0, 0}}, 5, 48, 40, false}),
    [](const ::testing::TestParamInfo<ShiftRow>& info) { return std::string(info.param.name); });

TEST(BlockLoop, NegativeSampleOffersNothing) {
    // Maximum area: image 1's mark is 6 left of image 2's, so its samples run 6
    // behind and are negative up to x = 5. There image 2 gives the blocks, although
    // image 1 scores better wherever it has a pixel.
    ProgramState s = makeState(16, 8, 2, 4);
    fillImage(s, 1, 100, 0, 0);
    fillImage(s, 2, 50, 0, 0);
    collectTargetCentres(s, [](int k) { return MarkCentre{k == 1 ? 13.0 : 19.0, 13.0}; });
    const OffsetStep step = applyOffsetMode(s, OffsetMode::maximum, 16, 8);
    ASSERT_EQ(s.imageWidth, 24);
    s.buffers.sizeMontage(static_cast<int>(s.imageWidth), static_cast<int>(s.imageHeight));
    s.increment = 4;
    runBlockLoop(s, step.rowShift, nullptr);
    const std::pair<int, int> rows[] = {{0, 50}, {5, 50}, {8, 100}, {21, 100}, {22, 0}, {23, 0}};
    for (const auto& [x, red] : rows) {
        // Past image 1's last column the winner's block is cut: the montage keeps
        // what it held, though image 2 would reach there.
        EXPECT_EQ(s.buffers.redAt(x, 0, 100), red) << x;
    }
}

TEST(BlockLoop, SamplePositionBeyondSixteenBitsIsToldAndPassedOver) {
    ProgramState s = makeState(8, 8, 2, 4);
    fillImage(s, 1, 10, 0, 0);
    fillImage(s, 2, 20, 0, 0);
    s.offsetX(2) = 32767;  // x + 32767 leaves 16 bits from x = 1 on
    s.increment = 4;
    std::vector<int> stages;
    runBlockLoop(s, 0, nullptr, [&](const RuntimeError& e, int stage) {
        EXPECT_EQ(e.number(), 6);
        stages.push_back(stage);
    });
    EXPECT_EQ(stages.size(), 3u);  // blocks at x = 4 in rows 0, 4 and 8
    EXPECT_EQ(stages.front(), 9000);
    EXPECT_EQ(sourceOf(s, 5, 1), 1);  // image 2 sat those blocks out
}

// The block loop at its plainest: every block pixel by pixel, with the winner
// taken from the same measures. The loop proper copies whole runs of blocks.
void plainBlockLoop(ProgramState& s, int16_t rowShift) {
    const PixelBuffers& b = s.buffers;
    const MeasureContext measures(s);
    const int increment = s.increment;
    for (int y0 = 0; y0 <= static_cast<int>(s.imageHeight); y0 += increment) {
        for (int x0 = 0; x0 <= static_cast<int>(s.imageWidth) - 1; x0 += increment) {
            float best = kBestStart;
            int winner = 0;
            bool hasSample = false;
            int16_t wx = 0;
            int16_t wy = 0;
            for (int k = 1; k <= s.imageCount; ++k) {
                int16_t sx = 0;
                int16_t sy = 0;
                bool written = false;
                const float m =
                    measures.measure(static_cast<int16_t>(x0), static_cast<int16_t>(y0 + rowShift),
                                     static_cast<int16_t>(k), sx, sy, written);
                if (m > best) {
                    best = m;
                    winner = k;
                    hasSample = written;
                    wx = written ? sx : wx;
                    wy = written ? sy : wy;
                }
            }
            if (winner == 0 || !hasSample) {
                continue;
            }
            for (int py = y0; py < y0 + increment && py <= b.montageMaxY; ++py) {
                for (int px = x0; px < x0 + increment && px <= b.montageMaxX; ++px) {
                    const int sx = px + wx - x0;
                    const int sy = py + wy - y0;
                    if (sx >= 0 && sy >= 0 && sx <= b.seriesMaxX && sy <= b.seriesMaxY) {
                        std::memcpy(s.buffers.montageSlot(100) + py * b.montageRowBytes() + px * 3,
                                    b.seriesImage(winner) + sy * b.seriesRowBytes() + sx * 3, 3);
                    }
                }
            }
        }
    }
}

struct RunRow {
    const char* name;
    int width, height;  // the series
    int montageWidth, montageHeight;
    int increment;  // 3 x increment bytes a block row: below, at and above 16
    std::vector<std::pair<int, int>> offsets;  // per image
    int16_t baseX, baseY, rowShift;
    int method;
};

// Every byte of the montage, padding and untouched ones too, as the plain loop
// leaves it; offsets that differ down the images cut neighbouring blocks of one
// block row to different rows.
TEST(BlockLoop, RunsOfBlocksCopyWhatThePlainLoopCopies) {
    const RunRow rows[] = {
        {"ByPixel", 13, 9, 13, 9, 1, {{0, 0}, {1, 0}, {0, 1}}, 0, 0, 0, 0},
        {"FiveBelowSixteenBytes", 37, 23, 37, 23, 5, {{0, 0}, {0, 0}, {0, 0}}, 0, 0, 0, 1},
        {"SixEighteenBytes", 41, 29, 41, 29, 6, {{0, 0}, {2, -3}, {-1, 4}}, 0, 0, 0, 2},
        {"SixteenFortyEight", 70, 50, 70, 50, 16, {{0, 0}, {5, -7}, {-3, 9}}, 0, 0, 0, 3},
        {"TwentyCutRows", 97, 61, 104, 72, 20, {{0, 0}, {4, -11}, {-6, 13}, {1, 2}}, 6, 13, 0, 0},
        {"ShiftedRows", 64, 48, 64, 40, 11, {{0, 0}, {0, -5}, {3, 6}}, 0, 6, 5, 4},
        {"OneBlockWider", 30, 20, 30, 20, 64, {{0, 0}, {-2, 3}}, 0, 3, 0, 5},
        // Large enough for the lower rows to go to a second core.
        {"TwoCores", 1700, 1710, 1696, 1700, 20, {{0, 0}, {3, -2}, {-1, 4}}, 0, 4, 3, 0},
        {"TwoCoresOneOutOfReach", 1700, 1700, 1700, 1700, 20, {{0, 0}, {32767, 0}}, 0, 0, 0, 1},
    };
    for (const RunRow& r : rows) {
        const int images = static_cast<int>(r.offsets.size());
        ProgramState s = makeState(r.width, r.height, images, r.method);
        for (int k = 1; k <= images; ++k) {
            for (int y = 0; y <= s.buffers.seriesMaxY; ++y) {
                for (int x = 0; x <= s.buffers.seriesMaxX; ++x) {
                    const unsigned h = (x * 2654435761u) ^ (y * 40503u) ^ (k * 97u);
                    setPixel(s, k, x, y, static_cast<int>(h % 256), static_cast<int>(h / 7 % 256),
                             static_cast<int>(h / 131 % 256));
                }
            }
            s.offsetX(k) = static_cast<int16_t>(r.offsets[static_cast<size_t>(k - 1)].first);
            s.offsetY(k) = static_cast<int16_t>(r.offsets[static_cast<size_t>(k - 1)].second);
        }
        s.offsetBaseX = r.baseX;
        s.offsetBaseY = r.baseY;
        s.imageWidth = static_cast<float>(r.montageWidth);
        s.imageHeight = static_cast<float>(r.montageHeight);
        s.buffers.sizeMontage(r.montageWidth, r.montageHeight);
        const size_t bytes =
            s.buffers.montageRowBytes() * static_cast<size_t>(s.buffers.montageMaxY + 1);
        std::memset(s.buffers.montageSlot(100), 0xab, bytes);
        s.increment = static_cast<int16_t>(r.increment);
        plainBlockLoop(s, r.rowShift);
        const std::vector<uint8_t> want(s.buffers.montageSlot(100),
                                        s.buffers.montageSlot(100) + bytes);
        std::memset(s.buffers.montageSlot(100), 0xab, bytes);
        // Each row of blocks is told once, in order, and only when it stands finished.
        const uint8_t* got = s.buffers.montageSlot(100);
        std::vector<int> told;
        size_t unfinished = 0;
        runBlockLoop(s, r.rowShift, [&](int16_t y0) {
            told.push_back(y0);
            const size_t rowBytes = s.buffers.montageRowBytes();
            const size_t first = static_cast<size_t>(y0) * rowBytes;
            const size_t end = std::min(bytes, first + static_cast<size_t>(r.increment) * rowBytes);
            for (size_t i = first; i < end; ++i) {
                unfinished += got[i] != want[i] ? 1 : 0;
            }
        });
        std::vector<int> expectedRows;
        for (int y0 = 0; y0 <= r.montageHeight; y0 += r.increment) {
            expectedRows.push_back(y0);
        }
        EXPECT_EQ(told, expectedRows) << r.name;
        EXPECT_EQ(unfinished, 0u) << r.name;
        size_t differing = 0;
        size_t copied = 0;
        for (size_t i = 0; i < bytes; ++i) {
            differing += got[i] != want[i] ? 1 : 0;
            copied += want[i] != 0xab ? 1 : 0;
        }
        EXPECT_EQ(differing, 0u) << r.name;
        EXPECT_GT(copied, bytes / 2) << r.name;
    }
}

}  // namespace
}  // namespace lumiquilt
