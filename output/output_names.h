#pragma once

#include <functional>
#include <string>

namespace lumiquilt {

/// The name Save As proposes for a window's picture: the file part of the caption
/// (behind " -- " or " image from "), cut at its first dot, and the suffix.
std::string proposedSaveName(const std::string& caption, const std::string& suffix);

/// How a picture is saved, chosen by the last three letters of the name alone.
enum class SaveRoad { bmp, jpeg, gif };
SaveRoad saveRoadFor(const std::string& fileName);

/// A folder of the user's own (mode 0700) under the system's temporary folder, for
/// the pictures handed to outside programs. Throws RuntimeError when it can't be had.
std::string privateTemporaryFolder();

/// folder + "qvztemp" + three random lower-case letters + ".bmp"; random gives
/// values in [0, 1).
std::string temporaryPictureName(const std::string& folder, const std::function<double()>& random);

/// The part of a name before its first dot (the whole name when it has none).
std::string beforeFirstDot(const std::string& name);

}  // namespace lumiquilt
