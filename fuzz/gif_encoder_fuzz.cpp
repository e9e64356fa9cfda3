// The GIF encoder: any small picture, mapped to the fixed palette or given as
// indices with a table of its own, with or without a transparent colour. The
// output must decode, with the tests' own decoder, to the pixels encoded.
//
// Input: a byte of choices, width, height, the transparent colour, then pixel bytes
// (repeated to fill the picture).
#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "output/gif_encoder.h"
#include "output/gif_test_support.h"

namespace lumiquilt::fuzz {

namespace {

constexpr int kLevels[5] = {0, 64, 128, 192, 255};

// Rows longer than the 253-entry dictionary are what start it afresh within a row.
constexpr int kMaxWidth = 700;
constexpr int kMaxHeight = 64;
constexpr int kMaxPixels = 4096;

uint8_t cycled(const std::string& bytes, size_t i) {
    return bytes.empty() ? 0 : static_cast<uint8_t>(bytes[i % bytes.size()]);
}

// Each channel of a mapped pixel is the level nearest the source, the lower on a tie.
void expectNearestLevels(const PictureView& view, const IndexedPicture& mapped) {
    const int step = view.format == PixelFormat::bgrx32 ? 4 : 3;
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            const uint8_t* p = view.bits + y * view.stride + x * step;
            const int source[3] = {view.format == PixelFormat::rgb24 ? p[0] : p[2], p[1],
                                   view.format == PixelFormat::rgb24 ? p[2] : p[0]};
            const int index = mapped.indices[static_cast<size_t>(y * view.width + x)];
            FUZZ_EXPECT(index < 125, "a mapped pixel beyond the 125 colours");
            for (int c = 0; c < 3; ++c) {
                const int chosen = mapped.colourTable[static_cast<size_t>(index * 3 + c)];
                for (int level : kLevels) {
                    const int d = std::abs(source[c] - level);
                    const int dc = std::abs(source[c] - chosen);
                    FUZZ_EXPECT(dc < d || (dc == d && chosen <= level),
                                "value " + std::to_string(source[c]) + " went to level " +
                                    std::to_string(chosen) + ", not " + std::to_string(level));
                }
            }
        }
    }
}

}  // namespace

void gifEncoderEntry(const uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const uint8_t choices = in.byte();
    const bool transparent = (choices & 1) != 0;
    const int source = (choices >> 1) & 3;  // 0: indices, 1 to 3: a picture to map
    const bool ownTable = (choices & 8) != 0;
    int width = in.inRange(1, kMaxWidth);
    const int height = in.inRange(1, kMaxHeight);
    width = std::min(width, kMaxPixels / height);
    uint32_t transparentColor = in.byte();
    transparentColor |= static_cast<uint32_t>(in.byte()) << 8;
    transparentColor |= static_cast<uint32_t>(in.byte()) << 16;
    const std::string bytes = in.rest();

    IndexedPicture picture;
    std::vector<uint8_t> samples;
    if (source == 0) {
        picture.width = width;
        picture.height = height;
        picture.indices.resize(static_cast<size_t>(width * height));
        for (size_t i = 0; i < picture.indices.size(); ++i) {
            picture.indices[i] = cycled(bytes, i);
        }
        picture.colourTable = halftonePalette();
        if (ownTable) {
            for (size_t i = 0; i < picture.colourTable.size(); ++i) {
                picture.colourTable[i] = cycled(bytes, i * 7 + 3);
            }
        }
    } else {
        PictureView view;
        view.width = width;
        view.height = height;
        view.format = source == 1   ? PixelFormat::bgr24
                      : source == 2 ? PixelFormat::rgb24
                                    : PixelFormat::bgrx32;
        const int step = source == 3 ? 4 : 3;
        // Rows padded to four bytes, as a decoded picture's are.
        view.stride = (width * step + 3) / 4 * 4;
        samples.resize(static_cast<size_t>(view.stride * height));
        for (size_t i = 0; i < samples.size(); ++i) {
            samples[i] = cycled(bytes, i);
        }
        view.bits = samples.data();
        picture = mapToHalftone(view);
        FUZZ_EXPECT(picture.width == width && picture.height == height &&
                        picture.indices.size() == static_cast<size_t>(width * height),
                    "the mapped picture has another size");
        expectNearestLevels(view, picture);
    }

    GIF gif;
    std::vector<int> progress;
    gif.Progress = [&progress](int percent) { progress.push_back(percent); };
    std::string out;
    const bool done = gif.encode(
        picture,
        [&out](const uint8_t* b, std::size_t count) {
            out.append(reinterpret_cast<const char*>(b), count);
            return true;
        },
        transparent, transparentColor);
    FUZZ_EXPECT(done, "the encoder refused a picture of " + std::to_string(width) + " by " +
                          std::to_string(height));

    testing::ParsedGif parsed;
    try {
        parsed = testing::parseGif(out);
    } catch (const std::exception& e) {
        FUZZ_EXPECT(false, std::string("the output does not decode: ") + e.what());
    }
    FUZZ_EXPECT(parsed.signature == (transparent ? "GIF89a" : "GIF87a"), "wrong signature");
    FUZZ_EXPECT(parsed.width == width && parsed.height == height, "wrong size in the header");
    FUZZ_EXPECT(
        parsed.table.size() == picture.colourTable.size() &&
            std::equal(parsed.table.begin(), parsed.table.end(), picture.colourTable.begin()),
        "the colour table differs");
    FUZZ_EXPECT(parsed.hasControl == transparent, "control block present or missing");
    if (transparent) {
        int index = 0;
        for (int i = 0; i < 256; ++i) {
            const uint8_t* c = &picture.colourTable[static_cast<size_t>(i * 3)];
            if ((c[0] | (c[1] << 8) | (c[2] << 16)) == static_cast<int>(transparentColor)) {
                index = i;
                break;
            }
        }
        FUZZ_EXPECT(parsed.transparentIndex == index, "wrong transparent index");
    }
    FUZZ_EXPECT(parsed.endsProperly, "the output does not end with terminator and trailer");
    for (int n : parsed.blockSizes) {
        FUZZ_EXPECT(n >= 1 && n <= 255, "a sub-block of " + std::to_string(n) + " bytes");
    }
    FUZZ_EXPECT(parsed.pixels == picture.indices, "the output decodes to other pixels");
    FUZZ_EXPECT(progress.size() == static_cast<size_t>(height / 10), "progress told wrongly often");
    for (size_t i = 0; i < progress.size(); ++i) {
        FUZZ_EXPECT(
            progress[i] >= 0 && progress[i] <= 100 && (i == 0 || progress[i] >= progress[i - 1]),
            "progress goes backward or out of 0 to 100");
    }
}

}  // namespace lumiquilt::fuzz
