#pragma once

#include <cstdint>

#include "series/pixel_buffers.h"

namespace lumiquilt {

/// The seam score of the montage in slot 100: the mean colour distance across the
/// block seams of a grid of blockSize, from eight samples along each right and top
/// edge. Lower is better; 0 when no block has a neighbour on both sides.
float evaluateImage(const PixelBuffers& buffers, float imageWidth, float imageHeight,
                    int16_t blockSize);

}  // namespace lumiquilt
