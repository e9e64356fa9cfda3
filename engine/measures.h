#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

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

/// The score of one pixel under method 0 to 6; higher is better.
float exposureMeasure(int method, int red, int green, int blue);

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
    const ProgramState& m_state;
    MeasureErrorFn m_onError;
    int m_method;
    const uint8_t* m_series;
    std::size_t m_rowBytes;
    std::size_t m_imageBytes;
};

/// The measure of one image at one block corner, as MeasureContext gives it.
float gotFocusMeasure(const ProgramState& state, int16_t x, int16_t y, int16_t k, int16_t& sampleX,
                      int16_t& sampleY, bool& written);

}  // namespace lumiquilt
