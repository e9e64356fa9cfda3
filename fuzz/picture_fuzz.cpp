// The picture adapter: any bytes as a BMP, JPEG, GIF or PNG member of a series,
// decoded and read into the series buffer as Create Image reads it.
//
// Input: a byte that picks the member's extension, then the file's bytes.
#include <QImageReader>

#include <string>

#include "core/runtime_error.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/scratch.h"
#include "series/picture_io.h"
#include "series/pixel_buffers.h"

namespace lumiquilt::fuzz {

namespace {

// The program allows 2 GiB a picture. A fuzzer that decoded that much for one input
// would do little else, so it refuses pictures above 4 MiB (a million pixels); the
// program's own refusal of larger ones is the hostile fixtures' business.
constexpr int kFuzzAllocationLimitMiB = 4;

// Blue, green, red of pixel (x, y) of a view, y downward.
void sampleOf(const PictureView& view, int x, int y, uint8_t bgr[3]) {
    const uint8_t* p = view.bits + static_cast<std::ptrdiff_t>(y) * view.stride;
    switch (view.format) {
        case PixelFormat::bgr24:
            p += 3 * x;
            bgr[0] = p[0], bgr[1] = p[1], bgr[2] = p[2];
            break;
        case PixelFormat::rgb24:
            p += 3 * x;
            bgr[0] = p[2], bgr[1] = p[1], bgr[2] = p[0];
            break;
        case PixelFormat::bgrx32:
            p += 4 * x;
            bgr[0] = p[0], bgr[1] = p[1], bgr[2] = p[2];
            break;
    }
}

}  // namespace

void pictureEntry(const uint8_t* data, std::size_t size) {
    struct AllocationLimit {
        int previous = QImageReader::allocationLimit();
        AllocationLimit() { QImageReader::setAllocationLimit(kFuzzAllocationLimitMiB); }
        ~AllocationLimit() { QImageReader::setAllocationLimit(previous); }
    } limit;

    FuzzInput in(data, size);
    static const char* const kExtensions[] = {".bmp", ".jpg", ".gif", ".png"};
    const std::string fileName = scratchFile(std::string("member1") + kExtensions[in.byte() % 4]);
    writeScratch(fileName, in.rest());

    QImage picture;
    try {
        picture = loadPicture(fileName);
    } catch (const RuntimeError& error) {
        FUZZ_EXPECT(error.number() == kInvalidPicture || error.number() == kOutOfMemory,
                    "a file that exists gave error " + std::to_string(error.number()));
        return;
    }
    FUZZ_EXPECT(!picture.isNull(), "a picture was loaded but is null");
    const PictureView view = viewOf(picture);
    FUZZ_EXPECT(
        view.width >= 1 && view.width <= 32767 && view.height >= 1 && view.height <= 32767,
        "a loaded picture of " + std::to_string(view.width) + " by " + std::to_string(view.height));
    FUZZ_EXPECT(view.bits != nullptr && view.stride >= view.width * 3, "a picture with no rows");

    // Image 1 of a series of one, as the buffers take it: rows upward, the padding
    // zero, every sample what the channel readers give.
    PixelBuffers buffers;
    buffers.sizeSeries(view.width, view.height, 1);
    const int frameWidth = buffers.seriesMaxX + 1;
    const int frameHeight = buffers.seriesMaxY + 1;
    readPictureIntoFrame(view, buffers.seriesImage(1), frameWidth, frameHeight);
    const uint8_t* frame = buffers.seriesImage(1);
    for (int y = 0; y < frameHeight; ++y) {
        const uint8_t* row = frame + static_cast<std::size_t>(y) * frameWidth * 3;
        for (int x = 0; x < frameWidth; ++x) {
            uint8_t bgr[3] = {0, 0, 0};
            if (x < view.width && y < view.height) {
                sampleOf(view, x, view.height - 1 - y, bgr);
            }
            FUZZ_EXPECT(
                row[3 * x] == bgr[0] && row[3 * x + 1] == bgr[1] && row[3 * x + 2] == bgr[2],
                "sample (" + std::to_string(x) + ", " + std::to_string(y) +
                    ") of the buffer is not the picture's");
        }
    }
    const int lastX = buffers.seriesMaxX;
    const int lastY = buffers.seriesMaxY;
    FUZZ_EXPECT(buffers.redAt(lastX + 1, 0, 1) == 0 && buffers.blueAt(0, lastY + 1, 1) == 0 &&
                    buffers.greenAt(lastX, lastY, 1) == frame[(lastY * frameWidth + lastX) * 3 + 1],
                "a channel reader at the bounds");

    // And back: the picture written from the frame is the one read.
    const QImage back = pictureFromFrame(frame, frameWidth, frameHeight, view.width, view.height);
    const PictureView backView = viewOf(back);
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            uint8_t a[3];
            uint8_t b[3];
            sampleOf(view, x, y, a);
            sampleOf(backView, x, y, b);
            FUZZ_EXPECT(a[0] == b[0] && a[1] == b[1] && a[2] == b[2],
                        "the picture written back differs at (" + std::to_string(x) + ", " +
                            std::to_string(y) + ")");
        }
    }
}

}  // namespace lumiquilt::fuzz
