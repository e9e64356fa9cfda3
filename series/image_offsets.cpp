#include "series/image_offsets.h"

#include <cmath>

#include "core/numbers.h"
#include "core/runtime_error.h"

namespace lumiquilt {

namespace {

// The extremes start here whatever the pictures' size: a centre beyond 999 never
// lowers the minimum, and one below 0 never raises the maximum.
constexpr int16_t kMinimumStart = 999;
constexpr int16_t kMaximumStart = 0;

// A size rounded to a whole number and then to a multiple of 4, cut toward zero.
// The sum is worked in float, as the size is.
float multipleOfFour(float size) {
    return static_cast<float>(4 * (toInt32(size) / 4));
}

// A whole number as the status strip shows it: no padding, halves away from zero.
std::string wholeText(double value) {
    return std::to_string(std::llround(value));
}

}  // namespace

OffsetMode offsetModeFrom(bool addOffsets, bool minimum, bool maximum, bool same) {
    if (!addOffsets) {
        return OffsetMode::off;
    }
    if (minimum) {
        return OffsetMode::minimum;
    }
    if (maximum) {
        return OffsetMode::maximum;
    }
    return same ? OffsetMode::same : OffsetMode::off;
}

void collectTargetCentres(ProgramState& s, const std::function<MarkCentre(int k)>& centreOf) {
    s.offsetMinX = kMinimumStart;
    s.offsetMaxX = kMaximumStart;
    s.offsetMinY = kMinimumStart;
    s.offsetMaxY = kMaximumStart;
    for (int k = 1; k <= s.imageCount && k < kImageSlots; ++k) {
        if (s.isIgnored(k)) {
            continue;
        }
        const MarkCentre c = centreOf(k);
        const int16_t x = toInt16(c.x);
        s.offsetX(k) = x;
        // Two tests, not an else: the first centre can set both extremes.
        if (x < s.offsetMinX) {
            s.offsetMinX = x;
        }
        if (x > s.offsetMaxX) {
            s.offsetMaxX = x;
        }
        const int16_t y = toInt16(c.y);
        s.offsetY(k) = y;
        if (y < s.offsetMinY) {
            s.offsetMinY = y;
        }
        if (y > s.offsetMaxY) {
            s.offsetMaxY = y;
        }
    }
}

OffsetStep clearImageOffsets(ProgramState& s) {
    for (auto& axis : s.imageOffsets) {
        axis.fill(0);
    }
    s.offsetBaseX = 0;
    s.offsetBaseY = 0;
    return OffsetStep{};
}

OffsetStep applyOffsetMode(ProgramState& s, OffsetMode mode, float firstWidth, float firstHeight) {
    if (mode == OffsetMode::off) {
        return clearImageOffsets(s);
    }
    OffsetStep step;
    // Float equality on purpose: a size already changed by this mode stays as it is.
    const bool sizeMayChange =
        s.evaluationPass < 2 && s.imageWidth == firstWidth && s.imageHeight == firstHeight;
    // Spreads and shifts are 16-bit differences, as the centres are.
    auto difference = [](int16_t a, int16_t b) {
        return checkedInt16(static_cast<long long>(a) - b);
    };
    switch (mode) {
        case OffsetMode::minimum:
            s.offsetBaseX = s.offsetMinX;
            s.offsetBaseY = s.offsetMinY;
            step.rowShift = difference(s.offsetMaxY, s.offsetMinY);
            if (sizeMayChange) {
                s.imageWidth =
                    multipleOfFour(s.imageWidth - difference(s.offsetMaxX, s.offsetMinX));
                s.imageHeight =
                    multipleOfFour(s.imageHeight - difference(s.offsetMaxY, s.offsetMinY));
            }
            if ((s.imageWidth + 2.0 * s.sizingFrameHeight) * s.twipsPerPixel <= 0 ||
                (s.imageHeight + s.captionHeight + 2.0 * s.dialogFrameHeight) * s.twipsPerPixel <=
                    0) {
                step.outcome = OffsetOutcome::noMinimumArea;
                return step;
            }
            break;
        case OffsetMode::maximum:
            s.offsetBaseX = s.offsetMaxX;
            s.offsetBaseY = s.offsetMaxY;
            step.rowShift = difference(s.offsetMinY, s.offsetMaxY);
            if (sizeMayChange) {
                s.imageWidth =
                    multipleOfFour(s.imageWidth + difference(s.offsetMaxX, s.offsetMinX) + 3);
                s.imageHeight =
                    multipleOfFour(s.imageHeight + difference(s.offsetMaxY, s.offsetMinY) + 3);
            }
            if (s.imageHeight <= 0 || s.imageWidth <= 0) {
                step.outcome = OffsetOutcome::noMaximumSize;
                return step;
            }
            break;
        case OffsetMode::same:
            s.offsetBaseX = s.offsetMinX;
            s.offsetBaseY = s.offsetMinY;
            return step;
        case OffsetMode::off:
            break;
    }
    // The montage window's picture takes this size next: it can be 0, never less.
    if (s.imageWidth < 0 || s.imageHeight < 0) {
        throw RuntimeError(kInvalidPropertyValue);
    }
    step.resizeMontage = true;
    return step;
}

std::string targetStatusText(const std::vector<std::pair<int, MarkCentre>>& visibleCentres) {
    std::string text = " ";
    for (const auto& [k, c] : visibleCentres) {
        text += "    Image " + std::to_string(k) + " = " + wholeText(c.x) + " , " + wholeText(c.y);
    }
    return text;
}

}  // namespace lumiquilt
