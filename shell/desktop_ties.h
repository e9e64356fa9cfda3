#pragma once

#include <string>

#include "shell/shell_integration.h"

// The platform's side of the desktop ties, one file per platform. The verb is a
// key with a command under it: the key is made before its command and removed
// after it, and removing a key that still holds its command fails.
namespace lumiquilt::desktop_ties {

/// Where the desktop and the user's application entries are.
std::string desktopFolder();
std::string applicationsFolder();

/// Writes the shortcut file; false on failure.
bool writeShortcut(const ShellPlaces& places);

/// Makes (or opens) the verb's key, with its parents.
bool createVerbKey(const ShellPlaces& places);
/// Sets the verb's command: the program, with the file it is used on.
bool setVerbCommand(const ShellPlaces& places);
/// Removes the command; false when there was none to remove.
bool deleteVerbCommand(const ShellPlaces& places);
/// Removes the key; false when it is gone or still holds a command.
bool deleteVerbKey(const ShellPlaces& places);

/// The file that holds the verb's command, and the shortcut file.
std::string verbCommandFile(const ShellPlaces& places);
std::string shortcutFile(const ShellPlaces& places);

}  // namespace lumiquilt::desktop_ties
