#include "output/gif_encoder.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>

#include "gif_test_support.h"
#include "support/fingerprint.h"

namespace lumiquilt {
namespace {

using testing::fingerprint;
using testing::ParsedGif;
using testing::parseGif;

IndexedPicture indexed(int width, int height, const std::vector<uint8_t>& indices) {
    return {width, height, indices, halftonePalette()};
}

std::string encode(const IndexedPicture& picture, bool transparent = false, uint32_t colour = 0,
                   std::vector<int>* progress = nullptr) {
    GIF gif;
    if (progress != nullptr) {
        gif.Progress = [progress](int percent) { progress->push_back(percent); };
    }
    std::string bytes;
    EXPECT_TRUE(gif.encode(
        picture,
        [&bytes](const uint8_t* d, size_t n) {
            bytes.append(reinterpret_cast<const char*>(d), n);
            return true;
        },
        transparent, colour));
    return bytes;
}

TEST(GifEncoder, FullLastSubBlockGetsNoEmptyOneBehindIt) {
    // 1 clear + 224 pixels + 1 end = 226 codes = 2034 bits = 255 bytes exactly.
    std::vector<uint8_t> row(224);
    std::iota(row.begin(), row.end(), 0);
    const ParsedGif g = parseGif(encode(indexed(224, 1, row)));
    EXPECT_EQ(g.blockSizes, std::vector<int>{255});
    EXPECT_TRUE(g.endsProperly);
    EXPECT_EQ(g.pixels, row);
    // One more code (2043 bits) spills one byte into a second block.
    row.push_back(224);
    EXPECT_EQ(parseGif(encode(indexed(225, 1, row))).blockSizes, (std::vector<int>{255, 1}));
}

TEST(GifEncoder, ProgressEveryTenthRowOnly) {
    const std::pair<int, std::vector<int>> rows[] = {
        {9, {}}, {25, {40, 80}}, {80, {12, 25, 38, 50, 62, 75, 88, 100}}};  // halves to even
    for (const auto& [height, expected] : rows) {
        std::vector<int> progress;
        encode(indexed(3, height, std::vector<uint8_t>(3 * height, 1)), false, 0, &progress);
        EXPECT_EQ(progress, expected) << height;
    }
}

TEST(GifEncoder, TransparentColourGivesGif89a) {
    // 0x00BBGGRR of entry 1: red 64.
    ParsedGif g = parseGif(encode(indexed(2, 2, {0, 1, 1, 0}), true, 0x000040));
    EXPECT_EQ(g.signature, "GIF89a");
    EXPECT_TRUE(g.hasControl);
    EXPECT_EQ(g.transparentIndex, 1);
    EXPECT_EQ(g.pixels, (std::vector<uint8_t>{0, 1, 1, 0}));
    // A colour not in the table: index 0.
    g = parseGif(encode(indexed(2, 2, {0, 1, 1, 0}), true, 0x123456));
    EXPECT_EQ(g.transparentIndex, 0);
}

TEST(GifEncoder, BusyObjectRefusesASecondCall) {
    GIF gif;
    const auto sink = [](const uint8_t*, size_t) { return true; };
    bool inner = true;
    gif.Progress = [&](int) { inner = gif.encode(indexed(1, 1, {0}), sink); };
    EXPECT_TRUE(gif.encode(indexed(1, 10, std::vector<uint8_t>(10, 0)), sink));
    EXPECT_FALSE(inner);
}

TEST(GifEncoder, RefusingSinkIsReported) {
    GIF gif;
    int calls = 0;
    EXPECT_FALSE(gif.encode(indexed(300, 300, std::vector<uint8_t>(90000, 3)),
                            [&](const uint8_t*, size_t) { return ++calls < 3; }));
}

TEST(GifEncoder, OutputStaysByteForByteWhatItWas) {
    // Pictures of every kind of run: noise, flat stretches, gradients, rows that clear
    // the dictionary several times; fingerprints taken from the first encoder.
    struct Row {
        const char* name;
        int width;
        int height;
        std::function<uint8_t(int x, int y)> index;
        uint64_t plain;
        uint64_t transparent;
    };
    uint32_t seed = 12345;
    auto noise = [&seed](int, int) {
        seed = seed * 1103515245u + 12345u;
        return static_cast<uint8_t>((seed >> 16) % 125);
    };
    const Row rows[] = {
        {"noise", 301, 17, noise, 4751229932245102779ull, 529053947652729872ull},
        {"flat", 1000, 3, [](int, int) { return uint8_t{62}; }, 13227739139386832496ull,
         8776309764240988221ull},
        {"gradient", 257, 40, [](int x, int y) { return static_cast<uint8_t>((x / 7 + y) % 125); },
         17379958246091173519ull, 4909128217301505042ull},
        {"stripes", 4000, 2, [](int x, int) { return static_cast<uint8_t>((x / 3) % 5 * 25); },
         8958115986666269431ull, 424326773954767906ull},
        {"one column", 1, 9, [](int, int y) { return static_cast<uint8_t>(y); },
         9483556157387125834ull, 17833938565623805687ull},
    };
    for (const Row& row : rows) {
        std::vector<uint8_t> indices;
        for (int y = 0; y < row.height; ++y) {
            for (int x = 0; x < row.width; ++x) {
                indices.push_back(row.index(x, y));
            }
        }
        const IndexedPicture picture = indexed(row.width, row.height, indices);
        EXPECT_EQ(fingerprint(encode(picture)), row.plain) << row.name;
        EXPECT_EQ(fingerprint(encode(picture, true, 0xC08040)), row.transparent) << row.name;
    }
}

TEST(GifEncoder, MoreDictionariesThanItsStampCounts) {
    // Every row starts a dictionary; the last one is the 65535th, where the stamps
    // begin again, and no entry of an old dictionary may be found then.
    const int height = 65535;
    std::vector<uint8_t> indices;
    for (int y = 0; y < height - 1; ++y) {
        const auto a = static_cast<uint8_t>(y % 7);
        const auto b = static_cast<uint8_t>(y % 11);
        indices.insert(indices.end(), {a, b, a, b});
    }
    // Strings never seen before, in the dictionary that comes after the wrap.
    indices.insert(indices.end(), {100, 101, 102, 103});
    const ParsedGif g = parseGif(encode(indexed(4, height, indices)));
    EXPECT_TRUE(g.endsProperly);
    EXPECT_TRUE(g.pixels == indices);
}

}  // namespace
}  // namespace lumiquilt
