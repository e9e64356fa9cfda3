#include "engine/montage_run.h"

#include <algorithm>
#include <cstring>
#include <exception>
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
                      const DimensionMessageFn& showDimensionMessage, SeriesFrames* readAhead) {
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
    // Passes 2 and up of an evaluation load no picture, and the commands that could
    // change one are held off while the passes run: the buffer already holds what
    // reading the same pictures again would put there.
    if (state.evaluationPass >= 2 && b.seriesMaxImage == count &&
        b.seriesMaxX == paddedBound(first.width) && b.seriesMaxY == paddedBound(first.height) &&
        b.seriesPixels.size() ==
            b.seriesRowBytes() * static_cast<std::size_t>(b.seriesMaxY + 1) * count) {
        return;
    }
    if (readAhead != nullptr) {
        bool holdsAll = readAhead->capacity >= count;
        for (int k = 1; k <= count && holdsAll; ++k) {
            holdsAll = readAhead->holds(k, first.width, first.height);
        }
        if (holdsAll) {
            b.adoptSeries(std::move(readAhead->pixels), first.width, first.height, count);
            *readAhead = SeriesFrames{};
            return;
        }
    }
    b.sizeSeries(first.width, first.height, count);
    // Each image fills its own part of the buffer, so two cores can share them.
    auto readEvery = [&](int start, int step) {
        for (int k = start; k <= count; k += step) {
            if (readAhead != nullptr && readAhead->holds(k, first.width, first.height)) {
                std::memcpy(b.seriesImage(k), readAhead->frame(k), readAhead->frameBytes());
            } else {
                readPictureIntoFrame(images[static_cast<std::size_t>(k - 1)], b.seriesImage(k),
                                     b.seriesMaxX + 1, b.seriesMaxY + 1);
            }
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

// The part of one block that lies inside both buffers: montage columns and rows
// first..last, taken from the winner shifted by (dx, dy).
struct BlockCopy {
    const uint8_t* source;  // the winner's sample for montage pixel (pxFirst, pyFirst)
    int pxFirst;
    int pyFirst;
    int pyLast;
    std::size_t runBytes;
};

bool clipBlock(const PixelBuffers& b, int winner, int x0, int y0, int increment, int dx, int dy,
               BlockCopy& copy) {
    const int pxFirst = std::max(x0, -dx);
    const int pxLast =
        std::min({x0 + increment - 1, static_cast<int>(b.montageMaxX), b.seriesMaxX - dx});
    const int pyFirst = std::max(y0, -dy);
    const int pyLast =
        std::min({y0 + increment - 1, static_cast<int>(b.montageMaxY), b.seriesMaxY - dy});
    if (pxFirst > pxLast || pyFirst > pyLast) {
        return false;
    }
    copy.source = b.seriesImage(winner) +
                  static_cast<std::size_t>(pyFirst + dy) * b.seriesRowBytes() +
                  3u * static_cast<std::size_t>(pxFirst + dx);
    copy.pxFirst = pxFirst;
    copy.pyFirst = pyFirst;
    copy.pyLast = pyLast;
    copy.runBytes = 3u * static_cast<std::size_t>(pxLast - pxFirst + 1);
    return true;
}

// One run of a block row: a call to memcpy per 60-byte run cost more than the
// move itself, so short runs go as 16-byte moves, the last one overlapping its
// neighbour inside the run so that no byte outside is touched.
inline void copyRun(uint8_t* target, const uint8_t* source, std::size_t bytes) {
    if (bytes < 16 || bytes > 64) {
        std::memcpy(target, source, bytes);
        return;
    }
    std::size_t i = 0;
    for (; i + 16 < bytes; i += 16) {
        std::memcpy(target + i, source + i, 16);
    }
    std::memcpy(target + bytes - 16, source + bytes - 16, 16);
}

// Copies the blocks that share rows first..last a montage row at a time, so that
// the writes run along memory as a plain copy's do.
void copyBlockRange(PixelBuffers& b, const BlockCopy* copies, std::size_t count) {
    const std::size_t montageRow = b.montageRowBytes();
    const std::size_t seriesRow = b.seriesRowBytes();
    uint8_t* row = b.montageSlot(PixelBuffers::kFirstMontageSlot) +
                   static_cast<std::size_t>(copies[0].pyFirst) * montageRow;
    const std::size_t rows = static_cast<std::size_t>(copies[0].pyLast - copies[0].pyFirst + 1);
    for (std::size_t r = 0; r < rows; ++r, row += montageRow) {
        const std::size_t down = r * seriesRow;
        for (std::size_t i = 0; i < count; ++i) {
            const BlockCopy& c = copies[i];
            copyRun(row + 3u * static_cast<std::size_t>(c.pxFirst), c.source + down, c.runBytes);
        }
    }
}

// Copies a row of blocks. Blocks clipped by an offset can cover fewer rows than
// their neighbours; each set of equal rows goes on its own, which blocks never
// overlapping allows.
void copyBlockRow(PixelBuffers& b, std::vector<BlockCopy>& copies) {
    if (copies.empty()) {
        return;
    }
    auto sameRows = [](const BlockCopy& l, const BlockCopy& r) {
        return l.pyFirst == r.pyFirst && l.pyLast == r.pyLast;
    };
    const bool allAlike = std::all_of(copies.begin(), copies.end(), [&](const BlockCopy& c) {
        return sameRows(c, copies.front());
    });
    if (!allAlike) {
        std::stable_sort(copies.begin(), copies.end(), [](const BlockCopy& l, const BlockCopy& r) {
            return l.pyFirst != r.pyFirst ? l.pyFirst < r.pyFirst : l.pyLast < r.pyLast;
        });
    }
    std::size_t start = 0;
    while (start < copies.size()) {
        std::size_t end = start + 1;
        while (end < copies.size() && sameRows(copies[end], copies[start])) {
            ++end;
        }
        copyBlockRange(b, copies.data() + start, end - start);
        start = end;
    }
}

// The next value of a 16-bit loop counter; leaving 16 bits is an overflow.
int16_t nextCounter(int16_t value, int16_t step) {
    return checkedInt16(static_cast<long long>(value) + step);
}

// One row of blocks: each block corner's winner, and its block copied into slot 100.
class BlockRows {
  public:
    BlockRows(ProgramState& state, int16_t rowShift, const MeasureErrorFn& onMeasureError)
        : m_state(state),
          m_measures(state, onMeasureError),
          m_rowShift(rowShift),
          m_increment(state.increment),
          m_xLimit(toInt16(state.imageWidth - 1)),
          m_imageCount(std::min<int16_t>(state.imageCount, state.buffers.seriesMaxImage)) {}

    void run(int16_t y0, std::vector<BlockCopy>& copies) const {
        copies.clear();
        const PixelBuffers& b = m_state.buffers;
        // The row's sample line, worked out where its first measure would fail.
        const int16_t y = m_imageCount >= 1 && m_xLimit >= 0
                              ? checkedInt16(static_cast<long long>(y0) + m_rowShift)
                              : y0;
        for (int16_t x0 = 0; x0 <= m_xLimit;) {
            float best = kBestStart;
            int winner = 0;
            bool winnerHasSample = false;
            int16_t wx = 0;
            int16_t wy = 0;
            for (int16_t k = 1; k <= m_imageCount; ++k) {
                int16_t sx = wx;
                int16_t sy = wy;
                bool written = false;
                const float measure = m_measures.measure(x0, y, k, sx, sy, written);
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
            BlockCopy copy{};
            if (winner > 0 && winnerHasSample &&
                clipBlock(b, winner, x0, y0, m_increment, wx - x0, wy - y0, copy)) {
                // A block that goes on where its left neighbour's source ends joins it.
                BlockCopy* last = copies.empty() ? nullptr : &copies.back();
                if (last != nullptr && last->source + last->runBytes == copy.source &&
                    3u * static_cast<std::size_t>(last->pxFirst) + last->runBytes ==
                        3u * static_cast<std::size_t>(copy.pxFirst) &&
                    last->pyFirst == copy.pyFirst && last->pyLast == copy.pyLast) {
                    last->runBytes += copy.runBytes;
                } else {
                    copies.push_back(copy);
                }
            }
            if (x0 > m_xLimit - m_increment) {
                break;
            }
            x0 = nextCounter(x0, m_increment);
        }
        copyBlockRow(m_state.buffers, copies);
    }

    // True when no row can fail: every sample position and every shifted row stays
    // in 16 bits. Each is linear in the corner, so the first and last corners decide.
    bool cannotFail(int16_t lastY0) const {
        auto fits = [](long long v) { return v >= INT16_MIN && v <= INT16_MAX; };
        const long long lastX0 = m_xLimit < 0 ? 0 : m_xLimit / m_increment * m_increment;
        const long long yFirst = m_rowShift;
        const long long yLast = static_cast<long long>(lastY0) + m_rowShift;
        if (!fits(yFirst) || !fits(yLast)) {
            return false;
        }
        for (int k = 1; k <= m_imageCount; ++k) {
            if (m_state.isIgnored(k)) {
                continue;
            }
            const long long baseX =
                static_cast<long long>(m_state.offsetX(k)) - m_state.offsetBaseX;
            const long long baseY =
                static_cast<long long>(m_state.offsetBaseY) - m_state.offsetY(k);
            if (!fits(baseX) || !fits(baseX + lastX0) || !fits(baseY + yFirst) ||
                !fits(baseY + yLast)) {
                return false;
            }
        }
        return true;
    }

  private:
    ProgramState& m_state;
    const MeasureContext m_measures;
    int16_t m_rowShift;
    int16_t m_increment;
    int16_t m_xLimit;
    int16_t m_imageCount;
};

}  // namespace

void runBlockLoop(ProgramState& state, int16_t rowShift, const BlockRowFn& rowDone,
                  const MeasureErrorFn& onMeasureError) {
    PixelBuffers& b = state.buffers;
    const int16_t increment = state.increment;
    if (increment < 1) {
        throw RuntimeError(kInvalidProcedureCall);
    }
    const int16_t yLimit = toInt16(state.imageHeight);
    const BlockRows blocks(state, rowShift, onMeasureError);

    // The rows' corners; stepping stops at the last corner that still leaves a whole
    // increment below yLimit, so it never leaves 16 bits.
    std::vector<int16_t> rows;
    for (int16_t y0 = 0; y0 <= yLimit;) {
        rows.push_back(y0);
        if (y0 > yLimit - increment) {
            break;
        }
        y0 = nextCounter(y0, increment);
    }

    // Rows of blocks never share a byte of slot 100, so a second core can take the
    // lower half when no row can fail: a failure mid-way must leave the rows after it
    // as they were, and its message must come in its turn.
    constexpr std::size_t kMontageWorthASecondThread = 2u << 20;
    const bool twoCores = rows.size() >= 2 &&
                          b.montageRowBytes() * static_cast<std::size_t>(b.montageMaxY + 1) >=
                              kMontageWorthASecondThread &&
                          blocks.cannotFail(rows.back());
    const std::size_t split = twoCores ? rows.size() / 2 : rows.size();
    std::exception_ptr lowerFailed;
    std::size_t lowerEnd = split;  // the rows below this one are done
    std::jthread lower;
    if (twoCores) {
        // The montage's pages are fresh: taken on two threads at once they can stall
        // the kernel for tens of milliseconds, so this thread takes the lower half's
        // first, leaving every byte as it is.
        uint8_t* slot = b.montageSlot(PixelBuffers::kFirstMontageSlot);
        const std::size_t slotBytes =
            b.montageRowBytes() * static_cast<std::size_t>(b.montageMaxY + 1);
        constexpr std::size_t kPage = 4096;
        for (std::size_t at = static_cast<std::size_t>(rows[split]) * b.montageRowBytes();
             at < slotBytes; at += kPage) {
            volatile uint8_t* byte = slot + at;
            *byte = *byte;
        }
        lower = std::jthread([&] {
            try {
                std::vector<BlockCopy> copies;
                for (; lowerEnd < rows.size(); ++lowerEnd) {
                    blocks.run(rows[lowerEnd], copies);
                }
            } catch (...) {
                lowerFailed = std::current_exception();
            }
        });
    }
    std::vector<BlockCopy> copies;
    for (std::size_t i = 0; i < split; ++i) {
        blocks.run(rows[i], copies);
        if (rowDone) {
            rowDone(rows[i]);
        }
    }
    if (twoCores) {
        lower.join();
        for (std::size_t i = split; i < lowerEnd; ++i) {
            if (rowDone) {
                rowDone(rows[i]);
            }
        }
        if (lowerFailed) {
            std::rethrow_exception(lowerFailed);
        }
    }
}

void smoothMontage(PixelBuffers& /*buffers*/, int /*slot*/, Flag /*fromMenu*/) {
    // Deliberately empty: smoothing is offered by settings and hidden commands, but
    // no smoothing rule has ever been defined, so the montage is left untouched.
}

}  // namespace lumiquilt
