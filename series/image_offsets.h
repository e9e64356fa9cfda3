#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/program_state.h"

namespace lumiquilt {

/// Which area the shifted pictures are cut to, or off.
enum class OffsetMode { off, minimum, maximum, same };

/// The mode that the four menu checks give. The display entries are looked at in
/// the order minimum, maximum, same; offsets without a display entry are off.
OffsetMode offsetModeFrom(bool addOffsets, bool minimum, bool maximum, bool same);

/// The centre of a target mark, in picture pixels, Y downward, before rounding:
/// Left + Width / 2 and Top + Height / 2 of the outer circle.
struct MarkCentre {
    double x = 0;
    double y = 0;
};

/// The outer circle at its design place: Left 0, Top 0, 26 pixels across.
inline constexpr int kMarkOuterSize = 26;
/// The inner circle: 10 pixels across, 8 in from the outer one's corner.
inline constexpr int kMarkInnerInset = 8;
inline constexpr int kMarkInnerSize = 10;
inline constexpr MarkCentre kDesignMarkCentre{kMarkOuterSize / 2.0, kMarkOuterSize / 2.0};

/// The stage of a run that reads the marks. (21000, the start values before it,
/// can't fail.)
inline constexpr int kStageTargetCentres = 21050;

/// Reads the centre of every image in use into imageOffsets, rounded half to even
/// into 16 bits (error 6 beyond), and the extremes from the start values 999 and 0
/// as they stand. Ignored images are skipped and keep what they held.
void collectTargetCentres(ProgramState& state, const std::function<MarkCentre(int k)>& centreOf);

/// How the mode step ended.
enum class OffsetOutcome {
    aligned,        ///< the run goes on
    noMinimumArea,  ///< minimum: nothing is left to show; the run ends with its message
    noMaximumSize,  ///< maximum: no size; the run ends without a word
};

/// What the offset step gives a run.
struct OffsetStep {
    int16_t rowShift = 0;  ///< added to every block row when the measures sample
    OffsetOutcome outcome = OffsetOutcome::aligned;
    bool resizeMontage = false;  ///< minimum and maximum size the montage window anew
};

/// The step when offsets are off: all offsets, both bases and the row shift zero.
OffsetStep clearImageOffsets(ProgramState& state);

/// The mode step after collectTargetCentres: the bases, the row shift and, for
/// minimum and maximum, the new imageWidth and imageHeight (a multiple of 4, down
/// for minimum and up for maximum). The size changes only when evaluationPass is
/// below 2 and the size still equals image 1's (firstWidth by firstHeight), so a
/// pass that reuses the series doesn't shrink or grow it twice. Error 6 when a
/// spread leaves 16 bits; error 380 when a minimum area too small to show, but not
/// small enough for the message, would give the montage a negative size.
OffsetStep applyOffsetMode(ProgramState& state, OffsetMode mode, float firstWidth,
                           float firstHeight);

/// The message of a minimum area with nothing left, and its title.
inline constexpr const char* kNoMinimumAreaMessage =
    "I cannot continue with this selected 'minimum area' for the offsets, as with these offset "
    "positions there is no image.";
inline constexpr const char* kNoMinimumAreaTitle = "Change the area from the 'minimum'.";

/// The status strip's text: a blank, then for each visible picture window
/// "    Image " + its number + " = " + X + " , " + Y of its mark's centre.
std::string targetStatusText(const std::vector<std::pair<int, MarkCentre>>& visibleCentres);

}  // namespace lumiquilt
