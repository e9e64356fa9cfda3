#pragma once

#include <optional>
#include <string>
#include <vector>

namespace lumiquilt {

/// What the start-up reads from the program's arguments.
struct CommandLine {
    /// The arguments joined by one blank, one enclosing pair of double quotes taken off.
    std::string line;
    /// The arguments before the first switch, joined and trimmed; empty when none.
    std::string filePart;
    /// Text behind "-i" to the very end of the line, when the switch stands.
    std::optional<std::string> incrementText;
    /// Screen size named by "resolutionWxH", in pixels.
    std::optional<std::pair<double, double>> resolution;

    bool hasFile() const { return !filePart.empty(); }
};

/// Parses the program's arguments (without the program name itself).
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace lumiquilt
