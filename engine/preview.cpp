#include "engine/preview.h"

#include <algorithm>

#include "core/numbers.h"

namespace lumiquilt {

float previewReduce(int16_t previewMax, int16_t sourceMax) {
    if (sourceMax <= 0) {
        return 0.0f;
    }
    return static_cast<float>(static_cast<double>(previewMax) / sourceMax);
}

int previewSource(int p, float reduce, int16_t sourceMax) {
    if (reduce <= 0.0f || sourceMax < 0) {
        return 0;
    }
    // The quotient is a 32-bit float, as the scale is.
    const float exact = static_cast<float>(p) / reduce;
    const double rounded = roundHalfEven(static_cast<double>(exact));
    return static_cast<int>(std::clamp(rounded, 0.0, static_cast<double>(sourceMax)));
}

namespace {

// One preview row from one source row: px takes the sample of round(px / reduceX).
void copyPreviewRow(PixelBuffers& b, const uint8_t* sourceRow, int16_t sourceMaxX, float reduceX,
                    int py) {
    uint8_t* out = b.previewPixels.data() +
                   static_cast<std::size_t>(py) * 3u * static_cast<std::size_t>(b.previewMaxX + 1);
    for (int px = 0; px <= b.previewMaxX; ++px, out += 3) {
        const uint8_t* in =
            sourceRow + 3u * static_cast<std::size_t>(previewSource(px, reduceX, sourceMaxX));
        out[0] = in[0];
        out[1] = in[1];
        out[2] = in[2];
    }
}

}  // namespace

bool reducePicture(PixelBuffers& b, int picture, const std::function<void(int py)>& rowDone) {
    if (b.previewMaxX < 0 || b.previewMaxY < 0 || b.previewPixels.data() == nullptr) {
        return false;
    }
    const uint8_t* source = nullptr;
    std::size_t rowBytes = 0;
    int16_t maxX = -1;
    int16_t maxY = -1;
    if (picture >= PixelBuffers::kFirstMontageSlot) {
        if (picture > b.montageMaxSlot || b.montagePixels.data() == nullptr) {
            return false;
        }
        source = b.montageSlot(picture);
        rowBytes = b.montageRowBytes();
        maxX = b.montageMaxX;
        maxY = b.montageMaxY;
    } else {
        if (picture < 1 || picture > b.seriesMaxImage || b.seriesPixels.data() == nullptr) {
            return false;
        }
        source = b.seriesImage(picture);
        rowBytes = b.seriesRowBytes();
        maxX = b.seriesMaxX;
        maxY = b.seriesMaxY;
    }
    if (maxX < 0 || maxY < 0) {
        return false;
    }
    const float reduceX = previewReduce(b.previewMaxX, maxX);
    const float reduceY = previewReduce(b.previewMaxY, maxY);
    for (int py = 0; py <= b.previewMaxY; ++py) {
        const int sy = previewSource(py, reduceY, maxY);
        copyPreviewRow(b, source + static_cast<std::size_t>(sy) * rowBytes, maxX, reduceX, py);
        if (rowDone) {
            rowDone(py);
        }
    }
    return true;
}

bool PreviewProgress::row(PixelBuffers& b, int16_t y0) {
    if (b.previewMaxX < 0 || b.previewPixels.data() == nullptr || b.montageMaxX < 0 ||
        b.montagePixels.data() == nullptr) {
        return false;
    }
    const float reduceY = previewReduce(b.previewMaxY, b.montageMaxY);
    const int row =
        static_cast<int>(roundHalfEven(static_cast<double>(static_cast<float>(y0) * reduceY)));
    if (row == m_lastRow) {
        return false;
    }
    // The block loop runs one row past the picture when its height is a multiple of
    // the increment: there is no buffer row to copy there.
    if (y0 < 0 || y0 > b.montageMaxY || row < 0 || row > b.previewMaxY) {
        return false;
    }
    const uint8_t* source = b.montageSlot(PixelBuffers::kFirstMontageSlot) +
                            static_cast<std::size_t>(y0) * b.montageRowBytes();
    copyPreviewRow(b, source, b.montageMaxX, previewReduce(b.previewMaxX, b.montageMaxX), row);
    m_lastRow = row;
    return true;
}

}  // namespace lumiquilt
