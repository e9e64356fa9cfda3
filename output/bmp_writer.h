#pragma once

#include "output/byte_sink.h"
#include "series/pixel_buffers.h"

namespace lumiquilt {

/// Writes a picture as a 24-bit BMP file, laid out exactly as Qt's BMP writer lays
/// out a picture without alpha: a 14-byte file header, a 40-byte info header with
/// the given resolution, then the rows bottom first, each padded with zeros to a
/// multiple of four bytes. A bottom-up frame seen through a view with a negative
/// stride goes out without any conversion. Returns false when the sink refused bytes
/// or the picture is too large for the format.
bool writeBmp(const PictureView& picture, int dotsPerMeterX, int dotsPerMeterY,
              const ByteSink& sink);

}  // namespace lumiquilt
