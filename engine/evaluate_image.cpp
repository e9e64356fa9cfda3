#include "engine/evaluate_image.h"

#include <cmath>
#include <cstdint>

#include "core/numbers.h"

namespace lumiquilt {

namespace {

constexpr int kSlot = PixelBuffers::kFirstMontageSlot;

double distance(const PixelBuffers& b, int px, int py, int qx, int qy) {
    const int dr = b.redAt(px, py, kSlot) - b.redAt(qx, qy, kSlot);
    const int dg = b.greenAt(px, py, kSlot) - b.greenAt(qx, qy, kSlot);
    const int db = b.blueAt(px, py, kSlot) - b.blueAt(qx, qy, kSlot);
    return std::sqrt(static_cast<double>(dr * dr + dg * dg + db * db));
}

}  // namespace

float evaluateImage(const PixelBuffers& buffers, float imageWidth, float imageHeight,
                    int16_t blockSize) {
    const int inc = blockSize;
    if (inc < 1) {
        return 0.0f;
    }
    float sum = 0.0f;  // a 32-bit running sum, rounded at each addition
    int32_t count = 0;
    const long yLimit = toInt32(static_cast<double>(imageHeight) - inc - 1);
    const long xLimit = toInt32(static_cast<double>(imageWidth) - inc - 1);
    int offsets[8];
    for (int k = 1; k <= 8; ++k) {
        offsets[k - 1] = toInt16(static_cast<double>(inc) * k / 9.0);
    }
    for (long y = 0; y <= yLimit; y += inc) {
        for (long x = 0; x <= xLimit; x += inc) {
            const int bx = static_cast<int>(x);
            const int by = static_cast<int>(y);
            for (int off : offsets) {
                count += 2;
                sum = static_cast<float>(
                    sum + distance(buffers, bx + inc - 1, by + off, bx + inc, by + off));
                sum = static_cast<float>(
                    sum + distance(buffers, bx + off, by + inc - 1, bx + off, by + inc));
            }
        }
    }
    if (count == 0) {
        return 0.0f;
    }
    return static_cast<float>(static_cast<double>(sum) / count);
}

}  // namespace lumiquilt
