#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "output/byte_sink.h"
#include "series/pixel_buffers.h"

namespace lumiquilt {

/// A picture as palette indices, one byte a pixel, rows top-down, with its table.
struct IndexedPicture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> indices;            ///< width * height entries
    std::array<uint8_t, 768> colourTable{};  ///< entry i: red, green, blue at 3 * i
};

/// The fixed palette: five levels (0, 64, 128, 192, 255) of each channel, entry
/// 25 * blue + 5 * green + red for 125 colours; entries 125 to 255 are black.
std::array<uint8_t, 768> halftonePalette();

/// Maps a picture to the fixed palette by nearest colour. Because the palette is a
/// grid, the nearest colour is the nearest level of each channel on its own; a value
/// exactly between two levels (32, 96, 160) goes to the lower one.
IndexedPicture mapToHalftone(const PictureView& picture);

/// Writes GIF files with fixed 9-bit LZW codes: the dictionary starts afresh at every
/// row and holds at most 253 entries, so codes never need 10 bits.
class GIF {
  public:
    /// Called every tenth row with the share of rows done, 0 to 100.
    std::function<void(int percent)> Progress;

    /// Encodes to a sink. transparent selects GIF89a with transparentColor
    /// (0x00BBGGRR) as the transparent entry: the first equal table entry, else 0.
    /// Returns false when the object was busy or the sink refused bytes.
    bool encode(const IndexedPicture& picture, const ByteSink& sink, bool transparent = false,
                uint32_t transparentColor = 0);

    /// Encodes into a file, through a temporary file beside it that replaces the old
    /// one only when the whole picture is written. Throws RuntimeError on a file
    /// error; returns false when the object was busy.
    bool SaveGIF(const IndexedPicture& picture, const std::string& fileName,
                 bool transparent = false, uint32_t transparentColor = 0);

  private:
    class BitPacker;
    bool m_busy = false;
};

}  // namespace lumiquilt
