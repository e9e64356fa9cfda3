#pragma once

#include <array>
#include <string>

#include "core/program_state.h"

namespace lumiquilt {

/// What the report of a run reads: the state and the menus' checks at its end.
struct ReportInputs {
    std::string firstFileName;
    int imageCount = 0;
    std::array<bool, kIgnorableImages> ignored{};
    std::array<bool, kMethodCount> methodChecked{};
    std::string incrementText;
    int autoSmooth = 0;
    bool addOffsets = false;
    bool offsetsMin = false;
    bool offsetsMax = false;
    bool offsetsSame = false;
    std::array<std::array<int16_t, kImageSlots>, 2> imageOffsets{};
    std::string usedCaption;  ///< the caption of LabelUsed of the default FormUsed
};

/// The text that describes how a montage was made; lines end in CR LF. It is
/// also the body of a project file.
std::string setPropertiesString(const ReportInputs& in);

}  // namespace lumiquilt
