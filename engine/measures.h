#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

#include "core/numbers.h"
#include "core/program_state.h"
#include "core/runtime_error.h"

namespace lumiquilt {

/// Captions of the seven Exposure Methods, in menu order; the index is what
/// settings and projects store.
inline constexpr std::array<std::string_view, kMethodCount> kMethodCaptions = {
    "3D Color Space Focus",  "Absolute Color Difference", "Average Color Difference",
    "Linear Color Focus",    "Preference Red Focus",      "Preference Green Focus",
    "Preference Blue Focus",
};

/// Measure of an image that can't serve a block, and the start of the running best.
inline constexpr float kNoMeasure = -99999.0f;
inline constexpr float kBestStart = -999999.0f;

/// The score of one pixel under method 0 to 6; higher is better. Always inline, as the
/// block loop asks for it once per image and block.
[[gnu::always_inline]] inline float exposureMeasure(int method, int red, int green, int blue) {
    constexpr int kGreyPivot = 136;
    auto tent = [](int channel) { return channel > kGreyPivot ? 255 - channel : channel; };
    auto absDiff = [](int a, int b) { return a > b ? a - b : b - a; };
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

/// The first method whose flag is set, or -1 when none is.
int selectedMethod(const std::array<Flag, kMethodCount>& methodChecked);

/// The stage that the message of a failed sample position names.
inline constexpr int kStageSamplePosition = 9000;

/// Told of a failure while measuring; the block goes on without that image.
using MeasureErrorFn = std::function<void(const RuntimeError& error, int stage)>;

/// What the measures of one run share: the method and where each image's samples
/// stand, worked out once instead of at every block.
class MeasureContext {
  public:
    explicit MeasureContext(const ProgramState& state, MeasureErrorFn onError = nullptr);

    /// Scores image k at the block corner (x, y), moved by its offset. sampleX and
    /// sampleY get the sample position unless the image is ignored (then they are
    /// left alone and written is false). A sample below 0 scores kNoMeasure; one
    /// beyond the buffer's upper bounds reads as black.
    float measure(int16_t x, int16_t y, int16_t k, int16_t& sampleX, int16_t& sampleY,
                  bool& written) const;

  private:
    // A sample position that leaves 16 bits: tells the error and scores kNoMeasure.
    // sampleX still takes a good x when only y fails, as it always did.
    float positionFailed(long long wantX, long long wantY, int16_t& sampleX) const;

    const ProgramState& m_state;
    MeasureErrorFn m_onError;
    int m_method;
    const uint8_t* m_series;
    std::size_t m_rowBytes;
    std::size_t m_imageBytes;
};

// Inline, with the 16-bit tests as plain comparisons: the loop makes one call per
// image and block, and only a failing test goes out of line (checkedInt16 throws
// the very error it always did). No try block here: one keeps the compiler from
// inlining the call into the loop.
[[gnu::always_inline]] inline float MeasureContext::measure(int16_t x, int16_t y, int16_t k,
                                                            int16_t& sampleX, int16_t& sampleY,
                                                            bool& written) const {
    written = false;
    if (m_state.isIgnored(k)) {
        return kNoMeasure;
    }
    auto fits = [](long long v) { return v >= INT16_MIN && v <= INT16_MAX; };
    const long long wantX = static_cast<long long>(m_state.offsetX(k)) - m_state.offsetBaseX + x;
    const long long wantY = static_cast<long long>(m_state.offsetBaseY) - m_state.offsetY(k) + y;
    if (!fits(wantX) || !fits(wantY)) [[unlikely]] {
        return positionFailed(wantX, wantY, sampleX);
    }
    sampleX = static_cast<int16_t>(wantX);
    sampleY = static_cast<int16_t>(wantY);
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

/// The measure of one image at one block corner, as MeasureContext gives it.
float gotFocusMeasure(const ProgramState& state, int16_t x, int16_t y, int16_t k, int16_t& sampleX,
                      int16_t& sampleY, bool& written);

}  // namespace lumiquilt
