#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace lumiquilt {

/// Runs `lumiquilt-cli` with its arguments (without the program name). Relative
/// names are taken from currentFolder. Returns the exit code: 0 success, 1 a run
/// that the window program would stop with a message, 2 a usage error.
int runCli(const std::vector<std::string>& arguments, const std::string& currentFolder,
           std::ostream& out, std::ostream& err, bool showProgress = false);

}  // namespace lumiquilt
