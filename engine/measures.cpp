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

float gotFocusMeasure(const ProgramState& state, int16_t x, int16_t y, int16_t k, int16_t& sampleX,
                      int16_t& sampleY, bool& written) {
    written = false;
    if (state.isIgnored(k)) {
        return kNoMeasure;
    }
    sampleX = checkedInt16(static_cast<long long>(state.offsetX(k)) - state.offsetBaseX + x);
    sampleY = checkedInt16(static_cast<long long>(state.offsetBaseY) - state.offsetY(k) + y);
    written = true;
    if (sampleX < 0 || sampleY < 0) {
        return kNoMeasure;
    }
    const int method = selectedMethod(state.methodChecked);
    if (method < 0) {
        return kNoMeasure;
    }
    const PixelBuffers& b = state.buffers;
    return exposureMeasure(method, b.redAt(sampleX, sampleY, k), b.greenAt(sampleX, sampleY, k),
                           b.blueAt(sampleX, sampleY, k));
}

}  // namespace lumiquilt
