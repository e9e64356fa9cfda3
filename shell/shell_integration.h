#pragma once

#include <cstdint>
#include <string>

#include "display/modal_ui.h"
#include "persistence/form_preferences.h"

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

/// Adds the file manager's "Lumiquilt" entry for picture files, or writes it anew.
/// A failure is silent.
void addContextVerb(const ShellPlaces& places);

/// Removes that entry: its command, then (if that went) its key; then tells the
/// user by one of the two messages below whether the last removal tried worked.
void removeContextVerb(const ShellPlaces& places, ModalUi& ui);

/// The desktop ties as the Preferences dialog reaches them at OK. The dialog
/// decides when: it adds the verb only when its box turns on and removes it only
/// when the box turns off.
class DesktopShellTies : public PreferencesShellTies {
  public:
    DesktopShellTies(ShellPlaces places, ModalUi& ui) : m_places(std::move(places)), m_ui(ui) {}
    void makeDesktopShortcut() override;
    void addContextMenuVerb() override;
    void removeContextMenuVerb() override;

  private:
    ShellPlaces m_places;
    ModalUi& m_ui;
};

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
