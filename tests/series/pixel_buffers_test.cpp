#include "series/pixel_buffers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <sys/mman.h>

#include "core/runtime_error.h"
#include "support/series_error_of.h"

namespace lumiquilt {
namespace {

using testing::errorOf;

// Blue, green and red of one pixel of the buffers.
using Bgr = std::array<int, 3>;
Bgr bgrAt(const PixelBuffers& b, int x, int y, int picture) {
    return {b.blueAt(x, y, picture), b.greenAt(x, y, picture), b.redAt(x, y, picture)};
}

// A top-down picture of distinct samples in any of the layouts a reader gives.
struct Picture {
    int width, height;
    PixelFormat format;
    std::vector<uint8_t> bits;
    int bytesPerPixel() const { return format == PixelFormat::bgrx32 ? 4 : 3; }
    Picture(int w, int h, PixelFormat f) : width(w), height(h), format(f) {
        bits.resize(static_cast<size_t>(w * h * bytesPerPixel()));
        for (size_t i = 0; i < bits.size(); ++i) {
            bits[i] =
                static_cast<uint8_t>(i % 4 == 3 && f == PixelFormat::bgrx32 ? 0xEE : i % 251 + 1);
        }
    }
    PictureView view() const {
        return {width, height, bits.data(), width * bytesPerPixel(), format};
    }
    Bgr at(int x, int row) const {
        const uint8_t* p = &bits[static_cast<size_t>((row * width + x) * bytesPerPixel())];
        return format == PixelFormat::rgb24 ? Bgr{p[2], p[1], p[0]} : Bgr{p[0], p[1], p[2]};
    }
};

TEST(PixelBuffers, BoundsArePaddedToAMultipleOfFour) {
    EXPECT_EQ(paddedBound(641), 643);
    EXPECT_EQ(paddedBound(481), 483);
    EXPECT_EQ(paddedBound(640), 639);
    EXPECT_EQ(paddedBound(1), 3);
    PixelBuffers b;
    b.sizeSeries(641, 481, 2);
    EXPECT_EQ(b.seriesMaxX, 643);
    EXPECT_EQ(b.seriesMaxY, 483);
    EXPECT_EQ(b.seriesRowBytes(), 1932u);
    EXPECT_EQ(b.seriesPixels.size(), 1932u * 484 * 2);
}

// Every sample of the frame: buffer row 0 is the picture's bottom row, a picture
// larger than the frame is cut from its bottom left, and the rest reads as zero.
TEST(PixelBuffers, PicturesOfEveryLayoutAndSizeLandBottomRowFirst) {
    struct Row {
        int width, height;
        PixelFormat format;
        int seriesWidth, seriesHeight;
    };
    std::vector<Row> rows = {
        {5, 3, PixelFormat::bgr24, 5, 3}, {10, 10, PixelFormat::bgr24, 4, 4},
        {2, 2, PixelFormat::bgr24, 4, 4}, {1, 1, PixelFormat::rgb24, 1, 1},
        {7, 5, PixelFormat::rgb24, 7, 5}, {9, 6, PixelFormat::rgb24, 4, 8},
    };
    // Thirty-two-bit rows go four pixels at a time and the rest one by one.
    for (int width = 1; width <= 9; ++width) {
        rows.push_back({width, 2, PixelFormat::bgrx32, width, 2});
    }
    for (const Row& row : rows) {
        const Picture picture(row.width, row.height, row.format);
        PixelBuffers b;
        b.sizeSeries(row.seriesWidth, row.seriesHeight, 1);
        readPictureIntoFrame(picture.view(), b.seriesImage(1), b.seriesMaxX + 1, b.seriesMaxY + 1);
        for (int y = 0; y <= b.seriesMaxY; ++y) {
            const int fromTop = row.height - 1 - y;
            for (int x = 0; x <= b.seriesMaxX; ++x) {
                const Bgr expected = x < row.width && fromTop >= 0 ? picture.at(x, fromTop) : Bgr{};
                ASSERT_EQ(bgrAt(b, x, y, 1), expected)
                    << row.width << "x" << row.height << " format " << static_cast<int>(row.format)
                    << " at " << x << "," << y;
            }
        }
    }
}

TEST(PixelBuffers, ReadersOutsideTheBoundsGiveZero) {
    const Picture pic(4, 4, PixelFormat::bgr24);
    PixelBuffers b;
    b.sizeSeries(4, 4, 1);
    b.sizeMontage(4, 4);
    readPictureIntoFrame(pic.view(), b.seriesImage(1), 4, 4);
    readPictureIntoFrame(pic.view(), b.montageSlot(100), 4, 4);
    const int corner = pic.at(3, 0)[2];
    ASSERT_NE(corner, 0);
    EXPECT_EQ(b.redAt(3, 3, 1), corner);
    EXPECT_EQ(b.redAt(b.seriesMaxX + 1, 0, 1), 0);
    EXPECT_EQ(b.redAt(0, b.seriesMaxY + 1, 1), 0);
    EXPECT_EQ(b.redAt(0, 0, 2), 0);  // beyond seriesMaxImage
    EXPECT_EQ(b.redAt(3, 3, 100), corner);
    EXPECT_EQ(b.redAt(0, b.montageMaxY + 1, 100), 0);
    EXPECT_EQ(b.redAt(0, 0, 107), 0);
    EXPECT_EQ(b.redAt(-1, 0, 100), 0);
    EXPECT_EQ(b.redAt(0, 0, 106), 0);  // slots 101 to 106 start blank
}

TEST(PixelBuffers, AdoptedFramesBecomeTheSeriesWhateverTheirSize) {
    // Small buffers come from the heap, large ones are mappings of their own: the
    // frames beyond the images used go back either way.
    for (const int width : {5, 1001}) {
        const int height = 1001;
        SeriesFrames frames;
        frames.frameWidth = paddedBound(width) + 1;
        frames.frameHeight = paddedBound(height) + 1;
        frames.capacity = 3;
        frames.pixels.allocateZeroed(3 * frames.frameBytes());
        frames.filled = {1, 1, 0};
        for (int k = 1; k <= 3; ++k) {
            frames.frame(k)[frames.frameBytes() - 1] = static_cast<uint8_t>(k);
        }
        EXPECT_TRUE(frames.holds(2, width, height));
        EXPECT_FALSE(frames.holds(3, width, height));  // not filled
        EXPECT_FALSE(frames.holds(2, width + 4, height));
        EXPECT_FALSE(frames.holds(4, width, height));

        PixelBuffers b;
        b.adoptSeries(std::move(frames.pixels), width, height, 2);
        EXPECT_EQ(b.seriesMaxImage, 2);
        EXPECT_EQ(b.seriesMaxX, paddedBound(width));
        EXPECT_EQ(b.seriesPixels.size(), 2 * frames.frameBytes());
        EXPECT_EQ(b.redAt(b.seriesMaxX, b.seriesMaxY, 2), 2);
        EXPECT_EQ(b.redAt(b.seriesMaxX, b.seriesMaxY, 3), 0);
        // Too few samples for the images named is refused.
        SampleBuffer few;
        few.allocateZeroed(16);
        EXPECT_THROW(b.adoptSeries(std::move(few), width, height, 1), RuntimeError);
    }
}

// A series the machine can't hold is refused before anything is taken, though the
// system would map that much on paper and end the process once it is touched.
TEST(SampleBuffer, BlockBeyondTheMachinesMemoryIsOutOfMemory) {
    const std::size_t limit = SampleBuffer::budget();
    SampleBuffer buffer;
    buffer.allocateZeroed(4096);
    for (std::size_t bytes : {limit + 1, limit / 3 * 4, std::size_t{1} << 46}) {
        EXPECT_EQ(errorOf([&] { buffer.allocateZeroed(bytes); }), kOutOfMemory) << bytes;
        EXPECT_EQ(buffer.data(), nullptr);
    }
    // The series of thirty pictures of 32767 x 32767 that a lying header could ask for.
    PixelBuffers buffers;
    EXPECT_EQ(errorOf([&] { buffers.sizeSeries(32767, 32767, 30); }), kOutOfMemory);
}

// The budget counts every buffer alive, small or mapped, and gets back what a buffer
// gives up by going, shrinking, being emptied or handed on.
TEST(SampleBuffer, BudgetCountsEveryBufferTogether) {
    struct Reset {
        ~Reset() { SampleBuffer::setBudget(0); }
    } reset;
    const std::size_t base = SampleBuffer::held();
    const std::size_t big = 9u << 20;  // mapped, not taken from the heap
    SampleBuffer::setBudget(base + 2 * big + 100);

    SampleBuffer a;
    a.allocateZeroed(big);
    auto b = std::make_unique<SampleBuffer>();
    b->allocateZeroed(big);
    EXPECT_EQ(SampleBuffer::held(), base + 2 * big);
    EXPECT_TRUE(SampleBuffer::wouldFit(100));
    EXPECT_FALSE(SampleBuffer::wouldFit(101));

    SampleBuffer c;
    EXPECT_EQ(errorOf([&] { c.allocateZeroed(101); }), kOutOfMemory);
    EXPECT_EQ(SampleBuffer::held(), base + 2 * big);
    c.allocateZeroed(100);

    a.shrink(big - 1000);
    EXPECT_EQ(SampleBuffer::held(), base + 2 * big + 100 - 1000);
    SampleBuffer moved(std::move(a));
    SampleBuffer assigned;
    assigned = std::move(moved);
    EXPECT_EQ(SampleBuffer::held(), base + 2 * big + 100 - 1000);
    // A buffer taken anew gives back its old block before it asks.
    b->allocateZeroed(big + 1000);
    b.reset();
    assigned.shrink(0);
    c.allocateZeroed(0);
    EXPECT_EQ(SampleBuffer::held(), base);
}

// Within a run, a buffer of a picture's size given back is taken again by the next
// buffer of that size, cleared; kept ones give way to a buffer the budget has no
// room for beside them, and none outlives the run.
TEST(SampleBuffer, BuffersGivenBackAreUsedAgainClearedWithinARun) {
    struct Reset {
        ~Reset() { SampleBuffer::setBudget(0); }
    } reset;
    const std::size_t picture = (3u << 20) + 5;
    SampleBuffer outside;
    outside.allocateZeroed(picture);
    outside.allocateZeroed(0);
    EXPECT_EQ(SampleBuffer::spares(), 0u);

    std::optional<BufferReuse> run(std::in_place);
    auto first = std::make_unique<SampleBuffer>();
    first->allocateZeroed(picture);
    // Written but for its last page, which is never touched.
    std::memset(first->data(), 0xAB, picture - 8192);
    const uint8_t* at = first->data();
    first.reset();
    EXPECT_GE(SampleBuffer::spares(), picture);

    SampleBuffer other;
    other.allocateZeroed(picture + 4096);
    EXPECT_NE(other.data(), at);
    SampleBuffer again;
    again.allocateZeroed(picture);
    EXPECT_EQ(again.data(), at);
    EXPECT_EQ(SampleBuffer::spares(), 0u);
    // Cleared where it was written; untouched where it never was (a fault saved).
    unsigned char lastPage = 1;
    ASSERT_EQ(::mincore(again.data() + (3u << 20), 1, &lastPage), 0);
    EXPECT_EQ(lastPage & 1, 0);
    EXPECT_EQ(std::count(again.data(), again.data() + picture, 0), static_cast<long>(picture));

    // Given back, it stands beside the budget: a buffer it would crowd out gets its room.
    again.allocateZeroed(0);
    ASSERT_GT(SampleBuffer::spares(), 0u);
    SampleBuffer::setBudget(SampleBuffer::held() + 2 * picture);
    SampleBuffer larger;
    larger.allocateZeroed(2 * picture);
    EXPECT_EQ(SampleBuffer::spares(), 0u);

    larger.allocateZeroed(0);
    {
        const BufferReuse inner;  // a run within a run keeps them
    }
    ASSERT_GT(SampleBuffer::spares(), 0u);
    run.reset();
    EXPECT_EQ(SampleBuffer::spares(), 0u);
}

// A window shows a picture straight from the series buffer: whichever way the buffer
// lets go of its block, a hold keeps the block as it was, out of reach of the next
// buffer, and the budget gets it back with the last hold.
TEST(SampleBuffer, AHeldBlockOutlivesItsBufferAsItWas) {
    const std::size_t picture = (3u << 20) + 5;  // mapped, and kept for reuse in a run
    const std::pair<const char*, std::function<void(std::unique_ptr<SampleBuffer>&)>> ways[] = {
        {"goes", [](auto& b) { b.reset(); }},
        {"is emptied", [](auto& b) { b->allocateZeroed(0); }},
        {"is discarded", [](auto& b) { b->discard(); }},
        {"is taken anew", [&](auto& b) { b->allocateZeroed(picture); }},
        {"shrinks", [](auto& b) { b->shrink(4096); }},
        {"is handed on and goes",
         [](auto& b) {
             SampleBuffer other(std::move(*b));
             other = SampleBuffer();
         }},
    };
    const BufferReuse run;
    for (const auto& [way, letGo] : ways) {
        const std::size_t base = SampleBuffer::held();
        auto buffer = std::make_unique<SampleBuffer>();
        buffer->allocateZeroed(picture);
        std::memset(buffer->data(), 0x5A, picture);
        const uint8_t* samples = buffer->data();
        std::shared_ptr<const void> hold = buffer->hold();
        letGo(buffer);

        SampleBuffer next;
        next.allocateZeroed(picture);
        EXPECT_NE(next.data(), samples) << way;
        EXPECT_EQ(std::count(samples, samples + picture, 0x5A), static_cast<long>(picture)) << way;
        next.allocateZeroed(0);
        buffer.reset();
        EXPECT_EQ(SampleBuffer::held(), base + picture) << way;
        hold.reset();
        EXPECT_EQ(SampleBuffer::held(), base) << way;
    }
    // Without a hold alive the block is the buffer's alone again.
    SampleBuffer alone;
    alone.allocateZeroed(picture);
    const uint8_t* at = alone.data();
    alone.hold().reset();
    alone.allocateZeroed(0);
    SampleBuffer again;
    again.allocateZeroed(picture);
    EXPECT_EQ(again.data(), at);
}

}  // namespace
}  // namespace lumiquilt
