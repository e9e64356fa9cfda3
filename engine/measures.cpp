#include "engine/measures.h"

#include <algorithm>

#include "core/numbers.h"

namespace lumiquilt {

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

float MeasureContext::positionFailed(long long wantX, long long wantY, int16_t& sampleX) const {
    try {
        sampleX = checkedInt16(wantX);
        checkedInt16(wantY);
    } catch (const RuntimeError& error) {
        if (m_onError) {
            m_onError(error, kStageSamplePosition);
        }
    }
    return kNoMeasure;
}

float gotFocusMeasure(const ProgramState& state, int16_t x, int16_t y, int16_t k, int16_t& sampleX,
                      int16_t& sampleY, bool& written) {
    return MeasureContext(state).measure(x, y, k, sampleX, sampleY, written);
}

}  // namespace lumiquilt
