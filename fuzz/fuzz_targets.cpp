#include <array>

#include "fuzz/fuzz_entries.h"

namespace lumiquilt::fuzz {

std::span<const FuzzTarget> fuzzTargets() {
    static constexpr std::array<FuzzTarget, 6> kTargets = {{
        {"profile_file", profileFileEntry},
        {"command_line", commandLineEntry},
        {"series_name", seriesNameEntry},
        {"picture", pictureEntry},
        {"gif_encoder", gifEncoderEntry},
        {"properties_report", propertiesReportEntry},
    }};
    return kTargets;
}

}  // namespace lumiquilt::fuzz
