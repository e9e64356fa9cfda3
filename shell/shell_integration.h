#pragma once

#include <cstdint>
#include <string>

#include "display/modal_ui.h"

namespace lumiquilt {

/// What the desktop ties start, and where they are put.
struct ShellPlaces {
    std::string appPath;                    ///< the program's folder, ending in "/"
    std::string programName = "lumiquilt";  ///< the program in that folder
    std::string desktopFolder;              ///< the user's desktop
    std::string applicationsFolder;         ///< where the user's own application entries stand
};

/// The places for the program in appPath: the desktop and applications folders
/// that the user's desktop names (XDG user dirs, $XDG_DATA_HOME).
ShellPlaces shellPlaces(const std::string& appPath);

/// The desktop shortcut "Lumiquilt.desktop", written anew over any old one. It
/// starts the program in its own folder. False when it could not be written;
/// nothing is said.
bool makeDesktopShortcut(const ShellPlaces& places);

/// Adds or removes the file manager's "Lumiquilt" entry for picture files, at OK of
/// the Preferences dialog and before rightMouseEnabled takes the state of the box:
/// added, silently, when the box is checked and rightMouseEnabled is 0; removed,
/// with a message that says how that went, when the box is clear and
/// rightMouseEnabled is 1; otherwise nothing is touched.
void updateContextVerb(bool checkRight, int16_t rightMouseEnabled, const ShellPlaces& places,
                       ModalUi& ui);

/// The messages of a removal (information icon).
inline constexpr const char* kVerbRemovedText =
    "The 'Lumiquilt' item has been removed from the Windows Explorer Right Mouse Click context "
    "menu";
inline constexpr const char* kVerbRemovedTitle = "To restore it, you need to run setup again";
inline constexpr const char* kVerbNotRemovedText =
    "I have struck problems with removing the 'Lumiquilt' item from the Windows Explorer Right "
    "Mouse Click context menu";
inline constexpr const char* kVerbNotRemovedTitle = "Maybe it has already been removed????";

}  // namespace lumiquilt
