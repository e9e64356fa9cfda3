#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumiquilt {

/// Byte order of one pixel of a picture held outside the buffers.
enum class PixelFormat {
    bgr24,   ///< blue, green, red
    rgb24,   ///< red, green, blue
    bgrx32,  ///< blue, green, red, unused (a 32-bit 0xXXRRGGBB word on little-endian)
};

/// A decoded picture as a window or a file reader holds it: rows top-down.
struct PictureView {
    int width = 0;
    int height = 0;
    const uint8_t* bits = nullptr;  ///< first byte of the top row; null for a blank picture
    std::ptrdiff_t stride = 0;      ///< bytes from one row to the next
    PixelFormat format = PixelFormat::bgr24;
};

/// A zero-filled block of bytes. Large blocks come straight from the system as
/// untouched zero pages (large pages where offered), so a slot that is never
/// written costs no time.
class SampleBuffer {
  public:
    SampleBuffer() = default;
    SampleBuffer(const SampleBuffer&) = delete;
    SampleBuffer& operator=(const SampleBuffer&) = delete;
    SampleBuffer(SampleBuffer&& other) noexcept;
    SampleBuffer& operator=(SampleBuffer&& other) noexcept;
    ~SampleBuffer();

    /// Drops the old contents and takes `bytes` zero bytes. Throws RuntimeError 7,
    /// also when all buffers together would hold more than budget(), before anything
    /// is allocated.
    void allocateZeroed(std::size_t bytes);
    /// The most that all buffers of the process may hold together: three quarters of
    /// the machine's memory. The system would grant more on paper and end the process
    /// once it is touched.
    static std::size_t budget();
    /// Sets the budget to `bytes`; 0 gives back the machine's. For tests, and for a
    /// front end that must leave memory to other work.
    static void setBudget(std::size_t bytes);
    /// Bytes that all buffers hold now.
    static std::size_t held();
    /// Whether `bytes` more would fit in the budget now.
    static bool wouldFit(std::size_t bytes);
    /// Gives every buffer kept by a BufferReuse back to the system now.
    static void releaseSpares();
    /// Bytes kept that way now.
    static std::size_t spares();
    /// Empties the buffer and gives its block straight back to the system: for one
    /// that no buffer of its size will follow.
    void discard();
    /// Keeps the first `bytes` bytes and gives the rest back; never grows.
    void shrink(std::size_t bytes);

    uint8_t* data() { return m_data; }
    const uint8_t* data() const { return m_data; }
    std::size_t size() const { return m_size; }
    /// Tells this block from every other the process has taken, the same memory taken
    /// again included; 0 when empty. A move takes it along.
    std::uint64_t serial() const { return m_data != nullptr ? m_serial : 0; }

    /// A hold on the block: while one lives, the block outlives this buffer's letting
    /// go of it (released, discarded or taken anew), is never kept for reuse and never
    /// shrinks. A move takes the holds along. For views on the samples held elsewhere.
    std::shared_ptr<const void> hold();

  private:
    struct Held;

    void release(bool keep = true);
    bool heldElsewhere() const { return m_held && m_held.use_count() > 1; }

    uint8_t* m_data = nullptr;
    std::size_t m_size = 0;
    std::uint64_t m_serial = 0;
    void* m_mapping = nullptr;  ///< set when the block is a mapping of its own
    std::size_t m_mappingSize = 0;
    std::shared_ptr<Held> m_held;  ///< the holds' block, once one was asked for
};

/// While one lives, a buffer of a picture's size or more that is given back is kept
/// for the next buffer of the same size, which clears it instead of taking fresh
/// pages; when the last one goes, every buffer still kept goes back to the system.
/// A run lives inside one, so that between runs nothing is kept.
class BufferReuse {
  public:
    BufferReuse();
    ~BufferReuse();
    BufferReuse(const BufferReuse&) = delete;
    BufferReuse& operator=(const BufferReuse&) = delete;
};

/// Bound of a padded axis: the size rounded up to a multiple of four, less one.
int16_t paddedBound(int size);

/// The three flat sample buffers of all pixel work. Samples are blue, green, red;
/// x runs fastest, then y (bottom row first), then the picture. A picture of W by H
/// fills x < W and y < H; the padding columns and rows are zero.
struct PixelBuffers {
    static constexpr int kFirstMontageSlot = 100;
    static constexpr int kLastMontageSlot = 106;

    SampleBuffer seriesPixels;
    int16_t seriesMaxX = -1;
    int16_t seriesMaxY = -1;
    int16_t seriesMaxImage = 0;

    SampleBuffer montagePixels;
    int16_t montageMaxX = -1;
    int16_t montageMaxY = -1;
    int16_t montageMaxSlot = 0;

    SampleBuffer previewPixels;
    int16_t previewMaxX = -1;
    int16_t previewMaxY = -1;

    /// Bytes of one row of a series picture, of a montage picture.
    std::size_t seriesRowBytes() const { return 3u * static_cast<std::size_t>(seriesMaxX + 1); }
    std::size_t montageRowBytes() const { return 3u * static_cast<std::size_t>(montageMaxX + 1); }

    /// First sample of image k (1-based) of seriesPixels, of a montage slot.
    uint8_t* seriesImage(int image);
    const uint8_t* seriesImage(int image) const;
    uint8_t* montageSlot(int slot);
    const uint8_t* montageSlot(int slot) const;

    /// One sample of (x, y) of a picture: a series image below 100, a montage slot
    /// from 100. A call beyond the upper bounds (or below 0) reads 0.
    int blueAt(int x, int y, int picture) const { return sampleAt(0, x, y, picture); }
    int greenAt(int x, int y, int picture) const { return sampleAt(1, x, y, picture); }
    int redAt(int x, int y, int picture) const { return sampleAt(2, x, y, picture); }

    /// Sizes seriesPixels anew, zero-filled. Throws RuntimeError 7 without memory.
    void sizeSeries(int width, int height, int images);
    /// Takes seriesPixels out, leaving no series: nothing reads it until the next
    /// series is read in.
    SampleBuffer takeSeries();
    /// Sizes montagePixels (slots 100 to 106) anew, zero-filled.
    void sizeMontage(int width, int height);
    /// Sizes previewPixels anew, zero-filled.
    void sizePreview(int width, int height);
    /// Takes samples laid out as sizeSeries(width, height, images) lays them out, and
    /// at least that many of them, as seriesPixels.
    void adoptSeries(SampleBuffer&& samples, int width, int height, int images);

  private:
    int sampleAt(int channel, int x, int y, int picture) const;
};

/// Series pictures read ahead, each into its frame of a buffer laid out as
/// seriesPixels will be for image 1's size: image k at frame k - 1, the frames
/// zero-filled before. A front end that decodes its members itself hands these over,
/// so that the buffers take the samples instead of reading every picture again.
struct SeriesFrames {
    SampleBuffer pixels;
    int frameWidth = 0;   ///< padded, as seriesMaxX + 1 will be
    int frameHeight = 0;  ///< padded, as seriesMaxY + 1 will be
    int capacity = 0;     ///< frames the buffer holds
    /// filled[k - 1] is set when frame k - 1 holds image k as the run loaded it.
    std::vector<uint8_t> filled;

    std::size_t frameBytes() const {
        return 3u * static_cast<std::size_t>(frameWidth) * static_cast<std::size_t>(frameHeight);
    }
    uint8_t* frame(int image) {
        return pixels.data() + static_cast<std::size_t>(image - 1) * frameBytes();
    }
    /// True when image k's frame is filled and laid out for a frame of that size.
    bool holds(int image, int width, int height) const;
};

/// Copies `columns` pixels of one row in `format` as blue, green, red bytes.
void copyRowAsBgr(const uint8_t* source, PixelFormat format, int columns, uint8_t* target);

/// A frame of frameWidth by frameHeight (bottom row first) seen as a picture of
/// width by height with its top row first: a view with a negative stride, no copy.
PictureView frameAsPicture(const uint8_t* frame, int frameWidth, int frameHeight, int width,
                           int height);

/// A picture that stands in a frame of a series buffer: the frame seen upright, and
/// a hold that keeps the buffer's block while the view is in use.
struct FramedPicture {
    PictureView view;
    std::shared_ptr<const void> hold;
};

/// Copies a picture into a buffer frame of frameWidth by frameHeight (padded)
/// pixels, bottom-left corner at (0, 0), cut to the frame, a whole row at a time.
/// Samples of the frame that the picture doesn't reach are left as they were.
void readPictureIntoFrame(const PictureView& picture, uint8_t* frame, int frameWidth,
                          int frameHeight);
/// The same for the picture's rows first to end - 1 (counted from the top) alone.
void readPictureRowsIntoFrame(const PictureView& picture, int first, int end, uint8_t* frame,
                              int frameWidth, int frameHeight);

/// Writes the part of a frame that a picture of width by height covers into
/// top-down 24-bit blue-green-red rows: the reverse of readPictureIntoFrame.
void writeFrameToPicture(const uint8_t* frame, int frameWidth, int frameHeight, uint8_t* bits,
                         std::ptrdiff_t stride, int width, int height);

/// The same in red-green-blue order.
void writeFrameToRgbPicture(const uint8_t* frame, int frameWidth, int frameHeight, uint8_t* bits,
                            std::ptrdiff_t stride, int width, int height);

/// The dimension message of image k against image 1.
std::string dimensionMessage(int k, int width, int height, int width1, int height1);
inline constexpr const char* kDimensionTitle = "You can edit each picture to the same size";

}  // namespace lumiquilt
