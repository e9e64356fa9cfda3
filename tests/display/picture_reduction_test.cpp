#include "display/picture_reduction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

// One channel of the exact blend at an output pixel's centre, the slow way: the edge
// pixels stand for whatever lies beyond them.
double blendOf(const Made& m, int outWidth, int outHeight, int ox, int oy, int channel) {
    auto source = [](int o, int size, int outSize) {
        const double at = (o + 0.5) * size / outSize - 0.5;
        return std::clamp(at, 0.0, static_cast<double>(size - 1));
    };
    const double sx = source(ox, m.view.width, outWidth);
    const double sy = source(oy, m.view.height, outHeight);
    const int x0 = static_cast<int>(sx);
    const int y0 = static_cast<int>(sy);
    const int x1 = std::min(x0 + 1, m.view.width - 1);
    const int y1 = std::min(y0 + 1, m.view.height - 1);
    const int step = m.view.format == PixelFormat::bgrx32 ? 4 : 3;
    const bool rgb = m.view.format == PixelFormat::rgb24;
    const int at = channel == 1 ? 1 : ((channel == 0) != rgb ? 0 : 2);
    auto sample = [&](int x, int y) {
        return static_cast<double>(m.view.bits[y * m.view.stride + x * step + at]);
    };
    const double fx = sx - x0;
    const double fy = sy - y0;
    return (sample(x0, y0) * (1 - fx) + sample(x1, y0) * fx) * (1 - fy) +
           (sample(x0, y1) * (1 - fx) + sample(x1, y1) * fx) * fy;
}

// Each pixel within two levels of the exact blend (weights in 256ths, rounded twice) at its centre,
// in every layout; two pixels at a time and the odd one at the end of a row alike.
TEST(ScalePicture, EveryPixelIsTheBlendAtItsCentre) {
    struct Row {
        int width, height, outWidth, outHeight;
    };
    const Row rows[] = {{8, 6, 5, 4}, {9, 7, 9, 7},  {1, 1, 1, 1},     {2, 2, 1, 1},
                        {3, 1, 2, 1}, {1, 5, 1, 3},  {40, 30, 21, 17}, {100, 80, 91, 73},
                        {7, 9, 4, 8}, {64, 3, 33, 2}};
    for (PixelFormat format : {PixelFormat::bgr24, PixelFormat::rgb24, PixelFormat::bgrx32}) {
        for (const Row& row : rows) {
            const Made m = make(row.width, row.height, format, 3);
            const int w = row.outWidth;
            const int h = row.outHeight;
            std::vector<uint32_t> out(static_cast<std::size_t>(w + 1) * h, 0xDEADBEEF);
            scalePicture(m.view, w, h, out.data(),
                         static_cast<std::ptrdiff_t>((w + 1) * sizeof(uint32_t)));
            for (int oy = 0; oy < h; ++oy) {
                for (int ox = 0; ox < w; ++ox) {
                    const uint32_t pixel = out[static_cast<std::size_t>(oy * (w + 1) + ox)];
                    ASSERT_EQ(pixel >> 24, 0xFFu);
                    for (int channel = 0; channel < 3; ++channel) {
                        const double expected = blendOf(m, w, h, ox, oy, channel);
                        const auto got = static_cast<double>(pixel >> (8 * channel) & 0xFF);
                        ASSERT_LE(std::abs(got - expected), 2.0)
                            << static_cast<int>(format) << " " << row.width << "x" << row.height
                            << " to " << w << "x" << h << " at " << ox << "," << oy << " channel "
                            << channel;
                    }
                }
                EXPECT_EQ(out[static_cast<std::size_t>(oy * (w + 1) + w)], 0xDEADBEEFu);
            }
        }
    }
}

// At its own size a picture comes out as it went in; white stays white.
TEST(ScalePicture, OwnSizeIsACopyAndWhiteStaysWhite) {
    for (PixelFormat format : {PixelFormat::bgr24, PixelFormat::rgb24, PixelFormat::bgrx32}) {
        const Made m = make(13, 5, format, 1);
        std::vector<uint32_t> out(13 * 5);
        scalePicture(m.view, 13, 5, out.data(), 13 * 4);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 13; ++x) {
                const uint32_t expected = 0xFF000000u | meanOf(m, x, y, 1, 2) << 16 |
                                          meanOf(m, x, y, 1, 1) << 8 | meanOf(m, x, y, 1, 0);
                ASSERT_EQ(out[static_cast<std::size_t>(y * 13 + x)], expected) << x << "," << y;
            }
        }
    }
    std::vector<uint8_t> white(31 * 4 * 9, 0xFF);
    const PictureView view{31, 9, white.data(), 31 * 4, PixelFormat::bgrx32};
    std::vector<uint32_t> out(17 * 6);
    scalePicture(view, 17, 6, out.data(), 17 * 4);
    for (uint32_t pixel : out) {
        ASSERT_EQ(pixel, 0xFFFFFFFFu);
    }
}

}  // namespace
}  // namespace lumiquilt
