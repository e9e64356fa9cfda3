#include "engine/evaluate_image.h"

#include <cmath>
#include <cstdint>

#include "core/numbers.h"

namespace lumiquilt {

namespace {

constexpr int kSlot = PixelBuffers::kFirstMontageSlot;

// Slot 100's samples as the buffers' own reader gives them, black outside the slot,
// read here without a call per channel: a comparison scores millions of pairs.
class MontageSamples {
  public:
    explicit MontageSamples(const PixelBuffers& b)
        : m_slot(kSlot <= b.montageMaxSlot ? b.montageSlot(kSlot) : nullptr),
          m_rowBytes(b.montageRowBytes()),
          m_maxX(b.montageMaxX),
          m_maxY(b.montageMaxY) {}

    // Blue, green, red of pixel (x, y), or nullptr for black.
    const uint8_t* at(int x, int y) const {
        if (m_slot == nullptr || x < 0 || y < 0 || x > m_maxX || y > m_maxY) {
            return nullptr;
        }
        return m_slot + static_cast<std::size_t>(y) * m_rowBytes + static_cast<std::size_t>(x) * 3;
    }

    double distance(int px, int py, int qx, int qy) const {
        static constexpr uint8_t kBlack[3] = {0, 0, 0};
        const uint8_t* p = at(px, py);
        const uint8_t* q = at(qx, qy);
        p = p != nullptr ? p : kBlack;
        q = q != nullptr ? q : kBlack;
        const int dr = p[2] - q[2];
        const int dg = p[1] - q[1];
        const int db = p[0] - q[0];
        return std::sqrt(static_cast<double>(dr * dr + dg * dg + db * db));
    }

  private:
    const uint8_t* m_slot;
    std::size_t m_rowBytes;
    int m_maxX;
    int m_maxY;
};

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
    const MontageSamples samples(buffers);
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
                    sum + samples.distance(bx + inc - 1, by + off, bx + inc, by + off));
                sum = static_cast<float>(
                    sum + samples.distance(bx + off, by + inc - 1, bx + off, by + inc));
            }
        }
    }
    if (count == 0) {
        return 0.0f;
    }
    return static_cast<float>(static_cast<double>(sum) / count);
}

}  // namespace lumiquilt
