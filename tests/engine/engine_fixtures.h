#pragma once

#include <vector>

#include "core/program_state.h"

namespace lumiquilt::testing {

/// Fills image k of the series with one colour (red, green, blue).
inline void fillImage(ProgramState& s, int k, int red, int green, int blue) {
    uint8_t* p = s.buffers.seriesImage(k);
    const size_t n = s.buffers.seriesRowBytes() * static_cast<size_t>(s.buffers.seriesMaxY + 1);
    for (size_t i = 0; i < n; i += 3) {
        p[i] = static_cast<uint8_t>(blue);
        p[i + 1] = static_cast<uint8_t>(green);
        p[i + 2] = static_cast<uint8_t>(red);
    }
}

inline void setPixel(ProgramState& s, int picture, int x, int y, int red, int green, int blue) {
    uint8_t* base =
        picture >= 100 ? s.buffers.montageSlot(picture) : s.buffers.seriesImage(picture);
    const size_t row = picture >= 100 ? s.buffers.montageRowBytes() : s.buffers.seriesRowBytes();
    uint8_t* p = base + static_cast<size_t>(y) * row + static_cast<size_t>(x) * 3;
    p[0] = static_cast<uint8_t>(blue);
    p[1] = static_cast<uint8_t>(green);
    p[2] = static_cast<uint8_t>(red);
}

/// A state with `images` blank images of width by height, montage of the same size.
inline ProgramState makeState(int width, int height, int images, int method = 0) {
    ProgramState s;
    s.imageCount = static_cast<int16_t>(images);
    s.imageWidth = static_cast<float>(width);
    s.imageHeight = static_cast<float>(height);
    s.methodChecked[static_cast<size_t>(method)] = kTrue;
    s.buffers.sizeSeries(width, height, images);
    s.buffers.sizeMontage(width, height);
    return s;
}

}  // namespace lumiquilt::testing
