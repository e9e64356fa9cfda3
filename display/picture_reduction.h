#pragma once

#include <cstddef>
#include <cstdint>

#include "series/pixel_buffers.h"

namespace lumiquilt {

/// Columns or rows left when a side of `size` pixels is cut into squares of `factor`
/// (the last square may be cut short).
int reducedSide(int size, int factor);

/// Shrinks a picture by a whole factor: each output pixel is the rounded mean of its
/// factor x factor square (fewer pixels at the right and bottom edges), as a 32-bit
/// 0xFFRRGGBB word. `out` holds reducedSide(height) rows of reducedSide(width) words,
/// `outStride` bytes apart. A window shows a montage larger than the screen this way
/// first: one pass over the picture, before the fine scaling to the exact size.
void reducePicture(const PictureView& picture, int factor, uint32_t* out, std::ptrdiff_t outStride);

/// Scales a picture to outWidth x outHeight by bilinear filtering: each output pixel is
/// read at its centre, mapped back into the picture, from the four pixels around it
/// (the edge pixels repeated beyond the edges), as a 32-bit 0xFFRRGGBB word, within two
/// levels of the exact blend. Down to half the size it reads every pixel; below that,
/// reducePicture first. `out` holds outHeight rows of outWidth words, `outStride`
/// bytes apart.
void scalePicture(const PictureView& picture, int outWidth, int outHeight, uint32_t* out,
                  std::ptrdiff_t outStride);

}  // namespace lumiquilt
