#include "engine/measures.h"

#include <algorithm>

#include "core/numbers.h"

namespace lumiquilt {

namespace {

constexpr int kGreyPivot = 136;

int tent(int channel) {
    return channel > kGreyPivot ? 255 - channel : channel;
}

int absDiff(int a, int b) {
    return a > b ? a - b : b - a;
}

}  // namespace

float exposureMeasure(int method, int red, int green, int blue) {
    switch (method) {
        case 0: {
            // Each square in double, subtracted in turn from zero, stored as a float.
            double total = 0.0;
            total -= static_cast<double>(kGreyPivot - red) * (kGreyPivot - red);
            total -= static_cast<double>(kGreyPivot - green) * (kGreyPivot - green);
            total -= static_cast<double>(kGreyPivot - blue) * (kGreyPivot - blue);
            return static_cast<float>(total);
        }
        case 1: {
            int m = absDiff(red, blue);
            m = std::max(m, absDiff(red, green));
            m = std::max(m, absDiff(green, blue));
            return static_cast<float>(m);
        }
        case 2:
            return static_cast<float>(absDiff(red, blue) + absDiff(red, green) +
                                      absDiff(blue, green));
        case 3: {
            const int t = red + green + blue;
            return static_cast<float>(765 - t > t ? t : 765 - t);
        }
        case 4:
            return static_cast<float>(tent(red));
        case 5:
            return static_cast<float>(tent(green));
        case 6:
            return static_cast<float>(tent(blue));
        default:
            return kNoMeasure;
    }
}

int selectedMethod(const std::array<Flag, kMethodCount>& methodChecked) {
    for (int i = 0; i < kMethodCount; ++i) {
        if (methodChecked[static_cast<std::size_t>(i)] != 0) {
            return i;
        }
    }
    return -1;
}

MeasureContext::MeasureContext(const ProgramState& state, MeasureErrorFn onError)
    : m_state(state),
      m_onError(std::move(onError)),
      m_method(selectedMethod(state.methodChecked)),
      m_series(state.buffers.seriesPixels.data()),
      m_rowBytes(state.buffers.seriesRowBytes()),
      m_imageBytes(state.buffers.seriesRowBytes() *
                   static_cast<std::size_t>(state.buffers.seriesMaxY + 1)) {}

float MeasureContext::measure(int16_t x, int16_t y, int16_t k, int16_t& sampleX, int16_t& sampleY,
                              bool& written) const {
    written = false;
    if (m_state.isIgnored(k)) {
        return kNoMeasure;
    }
    try {
        sampleX =
            checkedInt16(static_cast<long long>(m_state.offsetX(k)) - m_state.offsetBaseX + x);
        sampleY =
            checkedInt16(static_cast<long long>(m_state.offsetBaseY) - m_state.offsetY(k) + y);
    } catch (const RuntimeError& error) {
        if (m_onError) {
            m_onError(error, kStageSamplePosition);
        }
        return kNoMeasure;
    }
    written = true;
    if (sampleX < 0 || sampleY < 0 || m_method < 0) {
        return kNoMeasure;
    }
    const PixelBuffers& b = m_state.buffers;
    if (sampleX > b.seriesMaxX || sampleY > b.seriesMaxY || k > b.seriesMaxImage) {
        return exposureMeasure(m_method, 0, 0, 0);
    }
    const uint8_t* p = m_series + static_cast<std::size_t>(k - 1) * m_imageBytes +
                       static_cast<std::size_t>(sampleY) * m_rowBytes +
                       static_cast<std::size_t>(sampleX) * 3;
    return exposureMeasure(m_method, p[2], p[1], p[0]);
}

float gotFocusMeasure(const ProgramState& state, int16_t x, int16_t y, int16_t k, int16_t& sampleX,
                      int16_t& sampleY, bool& written) {
    return MeasureContext(state).measure(x, y, k, sampleX, sampleY, written);
}

}  // namespace lumiquilt
