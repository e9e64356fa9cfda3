#pragma once

#include <cstdint>
#include <functional>

#include "series/pixel_buffers.h"

namespace lumiquilt {

/// The factor from a source's padded bound to the preview's: previewMax / sourceMax,
/// as a 32-bit float. x and y are scaled apart, so the frame is always filled.
float previewReduce(int16_t previewMax, int16_t sourceMax);

/// The source coordinate that preview coordinate p shows: round(p / reduce), halves
/// to the even neighbour, never outside 0..sourceMax.
int previewSource(int p, float reduce, int16_t sourceMax);

/// The reduced copy of a picture of the buffers (a series image below 100, a montage
/// slot from 100) into previewPixels by nearest-neighbour sampling, from the bottom
/// row up; rowDone(py) runs after each row. False, and nothing copied, when the
/// picture or the preview buffer isn't there.
bool reducePicture(PixelBuffers& buffers, int picture, const std::function<void(int py)>& rowDone);

/// The preview that grows while a montage is built: one preview row for each row of
/// blocks whose scaled row moves, so at most previewMaxY + 1 rows are drawn however
/// many rows of blocks there are.
class PreviewProgress {
  public:
    /// Before the block loop; no row has been drawn.
    void start() { m_lastRow = kNoRow; }

    /// After the row of blocks from buffer row y0: copies that buffer row of slot 100
    /// into preview row round(y0 * reduceY). True when a row was drawn; false when it
    /// is the row drawn last, or when it would lie beyond either buffer (the block row
    /// at imageHeight, a low picture's last row).
    bool row(PixelBuffers& buffers, int16_t y0);

    int lastRow() const { return m_lastRow; }

  private:
    static constexpr int kNoRow = -999;
    int m_lastRow = kNoRow;
};

}  // namespace lumiquilt
