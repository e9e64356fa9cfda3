#include "engine/montage_run.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "core/numbers.h"
#include "core/runtime_error.h"
#include "engine/measures.h"

namespace lumiquilt {

std::string checkIncrementText(const std::string& text) {
    if (!isNumber(text)) {
        return "10";
    }
    if (leadingNumber(text) < 1) {
        return "1";
    }
    return text;
}

int16_t incrementFromText(const std::string& text) {
    return toInt16(leadingNumber(text));
}

void loadPixelBuffers(ProgramState& state, const PictureView& montage, int montageWidth,
                      int montageHeight, const std::vector<PictureView>& images,
                      const DimensionMessageFn& showDimensionMessage) {
    PixelBuffers& b = state.buffers;
    b.sizeMontage(montageWidth, montageHeight);
    readPictureIntoFrame(montage, b.montageSlot(PixelBuffers::kFirstMontageSlot), b.montageMaxX + 1,
                         b.montageMaxY + 1);

    const int count = std::min<int>(state.imageCount, static_cast<int>(images.size()));
    if (count < 1) {
        b.sizeSeries(0, 0, 0);
        return;
    }
    const PictureView& first = images[0];
    if (state.evaluationPass == 0 && state.sizeCheckOff == kFalse && showDimensionMessage) {
        for (int k = 2; k <= std::min(count, kIgnorableImages); ++k) {
            const PictureView& image = images[static_cast<std::size_t>(k - 1)];
            if ((image.width != first.width || image.height != first.height) &&
                !state.isIgnored(k)) {
                showDimensionMessage(
                    dimensionMessage(k, image.width, image.height, first.width, first.height));
            }
        }
    }
    b.sizeSeries(first.width, first.height, count);
    // Each image fills its own part of the buffer, so two cores can share them.
    auto readEvery = [&](int start, int step) {
        for (int k = start; k <= count; k += step) {
            readPictureIntoFrame(images[static_cast<std::size_t>(k - 1)], b.seriesImage(k),
                                 b.seriesMaxX + 1, b.seriesMaxY + 1);
        }
    };
    constexpr std::size_t kWorthASecondThread = 8u << 20;
    if (count >= 2 && b.seriesPixels.size() >= kWorthASecondThread) {
        std::thread helper(readEvery, 2, 2);
        readEvery(1, 2);
        helper.join();
    } else {
        readEvery(1, 1);
    }
}

void loadMethodPixelBuffers(ProgramState& state, const std::vector<PictureView>& methodPictures) {
    PixelBuffers& b = state.buffers;
    const int slots = PixelBuffers::kLastMontageSlot - PixelBuffers::kFirstMontageSlot + 1;
    for (int i = 0; i < slots && i < static_cast<int>(methodPictures.size()); ++i) {
        readPictureIntoFrame(methodPictures[static_cast<std::size_t>(i)],
                             b.montageSlot(PixelBuffers::kFirstMontageSlot + i), b.montageMaxX + 1,
                             b.montageMaxY + 1);
    }
}

void loadPreviewBuffer(ProgramState& state, const PictureView& preview) {
    PixelBuffers& b = state.buffers;
    b.sizePreview(preview.width, preview.height);
    readPictureIntoFrame(preview, b.previewPixels.data(), b.previewMaxX + 1, b.previewMaxY + 1);
}

namespace {

// Copies the part of one block that lies inside both buffers. The bounds of the
// block are worked out once, so the inner copy is a plain run of bytes a row.
void copyBlock(PixelBuffers& b, int winner, int x0, int y0, int increment, int dx, int dy) {
    int pxFirst = std::max(x0, -dx);
    int pxLast = std::min({x0 + increment - 1, static_cast<int>(b.montageMaxX), b.seriesMaxX - dx});
    int pyFirst = std::max(y0, -dy);
    int pyLast = std::min({y0 + increment - 1, static_cast<int>(b.montageMaxY), b.seriesMaxY - dy});
    if (pxFirst > pxLast || pyFirst > pyLast) {
        return;
    }
    const std::size_t runBytes = 3u * static_cast<std::size_t>(pxLast - pxFirst + 1);
    const std::size_t montageRow = b.montageRowBytes();
    const std::size_t seriesRow = b.seriesRowBytes();
    uint8_t* dst = b.montageSlot(PixelBuffers::kFirstMontageSlot) +
                   static_cast<std::size_t>(pyFirst) * montageRow +
                   3u * static_cast<std::size_t>(pxFirst);
    const uint8_t* src = b.seriesImage(winner) +
                         static_cast<std::size_t>(pyFirst + dy) * seriesRow +
                         3u * static_cast<std::size_t>(pxFirst + dx);
    for (int py = pyFirst; py <= pyLast; ++py, dst += montageRow, src += seriesRow) {
        std::memcpy(dst, src, runBytes);
    }
}

// The next value of a 16-bit loop counter; leaving 16 bits is an overflow.
int16_t nextCounter(int16_t value, int16_t step) {
    return checkedInt16(static_cast<long long>(value) + step);
}

}  // namespace

void runBlockLoop(ProgramState& state, int16_t rowShift, const BlockRowFn& rowDone,
                  const MeasureErrorFn& onMeasureError) {
    PixelBuffers& b = state.buffers;
    const int16_t increment = state.increment;
    if (increment < 1) {
        throw RuntimeError(kInvalidProcedureCall);
    }
    const int16_t yLimit = toInt16(state.imageHeight);
    const int16_t xLimit = toInt16(state.imageWidth - 1);
    const int16_t imageCount = std::min<int16_t>(state.imageCount, b.seriesMaxImage);
    const MeasureContext measures(state, onMeasureError);

    for (int16_t y0 = 0; y0 <= yLimit;) {
        for (int16_t x0 = 0; x0 <= xLimit;) {
            float best = kBestStart;
            int winner = 0;
            bool winnerHasSample = false;
            int16_t wx = 0;
            int16_t wy = 0;
            for (int16_t k = 1; k <= imageCount; ++k) {
                int16_t sx = wx;
                int16_t sy = wy;
                bool written = false;
                const float measure = measures.measure(
                    x0, checkedInt16(static_cast<long long>(y0) + rowShift), k, sx, sy, written);
                if (measure > best) {
                    winner = k;
                    best = measure;
                    winnerHasSample = written;
                    if (written) {
                        wx = sx;
                        wy = sy;
                    }
                }
            }
            // A winner that only won because every image was ignored has no sample
            // position: its block is left as it was.
            if (winner > 0 && winnerHasSample) {
                copyBlock(b, winner, x0, y0, increment, wx - x0, wy - y0);
            }
            if (x0 > xLimit - increment) {
                break;
            }
            x0 = nextCounter(x0, increment);
        }
        if (rowDone) {
            rowDone(y0);
        }
        if (y0 > yLimit - increment) {
            break;
        }
        y0 = nextCounter(y0, increment);
    }
}

void smoothMontage(PixelBuffers& /*buffers*/, int /*slot*/, Flag /*fromMenu*/) {
    // Deliberately empty: smoothing is offered by settings and hidden commands, but
    // no smoothing rule has ever been defined, so the montage is left untouched.
}

OffsetStep clearImageOffsets(ProgramState& state) {
    for (auto& axis : state.imageOffsets) {
        axis.fill(0);
    }
    state.offsetBaseX = 0;
    state.offsetBaseY = 0;
    return OffsetStep{};
}

}  // namespace lumiquilt
