#include "display/picture_reduction.h"

#include <gtest/gtest.h>

#include <vector>

namespace lumiquilt {
namespace {

// A picture of width by height in the given layout whose channels differ by place.
struct Made {
    std::vector<uint8_t> bytes;
    PictureView view;
};

Made make(int width, int height, PixelFormat format, int padding) {
    const int step = format == PixelFormat::bgrx32 ? 4 : 3;
    Made m;
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(width) * step + padding;
    m.bytes.assign(static_cast<std::size_t>(stride * height), 0xEE);  // padding stays 0xEE
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint8_t* p = m.bytes.data() + y * stride + x * step;
            // Scattered, so that the sums of a square meet every rounding.
            uint32_t h =
                static_cast<uint32_t>(x) * 73856093u ^ static_cast<uint32_t>(y) * 19349663u;
            h ^= h >> 13;
            h *= 0x5bd1e995u;
            h ^= h >> 15;
            const auto r = static_cast<uint8_t>(h >> 24);
            const auto g = static_cast<uint8_t>(h >> 16);
            const auto b = static_cast<uint8_t>(h >> 8);
            p[0] = format == PixelFormat::rgb24 ? r : b;
            p[1] = g;
            p[2] = format == PixelFormat::rgb24 ? b : r;
            if (step == 4) {
                p[3] = 0x5A;
            }
        }
    }
    m.view = {width, height, m.bytes.data(), stride, format};
    return m;
}

// The rounded mean of one channel over a square, the slow way.
uint32_t meanOf(const Made& m, int ox, int oy, int factor, int channel) {
    const int step = m.view.format == PixelFormat::bgrx32 ? 4 : 3;
    const bool rgb = m.view.format == PixelFormat::rgb24;
    const int at = channel == 1 ? 1 : ((channel == 0) != rgb ? 0 : 2);  // 0 blue, 2 red
    uint32_t sum = 0;
    uint32_t count = 0;
    for (int y = oy * factor; y < std::min((oy + 1) * factor, m.view.height); ++y) {
        for (int x = ox * factor; x < std::min((ox + 1) * factor, m.view.width); ++x) {
            sum += m.view.bits[y * m.view.stride + x * step + at];
            ++count;
        }
    }
    return (sum + count / 2) / count;
}

TEST(ReducePicture, EverySquareIsTheRoundedMeanOfWhatItCovers) {
    struct Row {
        int width, height, factor;
    };
    // The last two: squares of 4096 pixels and more are divided, not multiplied.
    const Row rows[] = {{8, 6, 2},     {9, 7, 2},    {10, 10, 3},   {1, 1, 2},  {5, 3, 4},
                        {33, 17, 5},   {4, 4, 4},    {7, 2, 3},     {64, 9, 8}, {3, 40, 7},
                        {300, 2, 300}, {70, 70, 70}, {130, 140, 64}};
    for (PixelFormat format : {PixelFormat::bgr24, PixelFormat::rgb24, PixelFormat::bgrx32}) {
        for (const Row& row : rows) {
            const Made m = make(row.width, row.height, format, 3);
            const int w = reducedSide(row.width, row.factor);
            const int h = reducedSide(row.height, row.factor);
            std::vector<uint32_t> out(static_cast<std::size_t>(w + 1) * h, 0xDEADBEEF);
            reducePicture(m.view, row.factor, out.data(),
                          static_cast<std::ptrdiff_t>((w + 1) * sizeof(uint32_t)));
            for (int oy = 0; oy < h; ++oy) {
                for (int ox = 0; ox < w; ++ox) {
                    const uint32_t pixel = out[static_cast<std::size_t>(oy * (w + 1) + ox)];
                    const uint32_t expected = 0xFF000000u | meanOf(m, ox, oy, row.factor, 2) << 16 |
                                              meanOf(m, ox, oy, row.factor, 1) << 8 |
                                              meanOf(m, ox, oy, row.factor, 0);
                    ASSERT_EQ(pixel, expected)
                        << static_cast<int>(format) << " " << row.width << "x" << row.height << "/"
                        << row.factor << " at " << ox << "," << oy;
                }
                // The word past each row is the caller's.
                EXPECT_EQ(out[static_cast<std::size_t>(oy * (w + 1) + w)], 0xDEADBEEFu);
            }
        }
    }
}

// The column sums take 16 bits up to 257 rows: white, the largest sum, at the bound
// and past it.
TEST(ReducePicture, WhiteStaysWhiteAtTheWidthOfTheSums) {
    for (int factor : {257, 258}) {
        std::vector<uint8_t> white(static_cast<std::size_t>(factor) * factor * 3, 0xFF);
        const PictureView view{factor, factor, white.data(), factor * 3, PixelFormat::bgr24};
        uint32_t pixel = 0;
        reducePicture(view, factor, &pixel, 4);
        EXPECT_EQ(pixel, 0xFFFFFFFFu) << factor;
    }
}

TEST(ReducePicture, SidesAndNothingToDo) {
    EXPECT_EQ(reducedSide(4000, 4), 1000);
    EXPECT_EQ(reducedSide(4001, 4), 1001);
    EXPECT_EQ(reducedSide(3, 4), 1);
    EXPECT_EQ(reducedSide(0, 4), 0);
    EXPECT_EQ(reducedSide(10, 0), 0);
    uint32_t untouched = 7;
    reducePicture(PictureView{}, 2, &untouched, 4);
    EXPECT_EQ(untouched, 7u);
}

}  // namespace
}  // namespace lumiquilt
