#pragma once

#include <QSize>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/form_montage.h"
#include "shell/shell_integration.h"

namespace lumiquilt {

/// Steps of start-up that other windows and the desktop provide.
struct StartupHooks {
    /// Shows the splash and returns when it has closed (step 7).
    std::function<void()> showSplash;
    /// Makes the desktop shortcut again, when the settings ask for it (step 19).
    std::function<void()> makeDesktopShortcut;
};

/// The program's own hooks: the splash, and the shortcut made at `places`.
StartupHooks programStartupHooks(ModalUi& ui, const ShellPlaces& places);

/// The outcome of start-up: the main window, or nothing when the named file was
/// handed to the desktop and the program ends.
struct StartupResult {
    std::unique_ptr<FormMontage> window;
    bool handedToDesktop = false;
};

/// Start-up from the arguments to the shown main window. The settings are read
/// from `settings`; screenPixels is the real screen size.
StartupResult startLumiquilt(const std::vector<std::string>& arguments, ProgramState& state,
                             ModalUi& ui, Settings& settings, QSize screenPixels,
                             const StartupHooks& hooks = {});

/// The message when the command line names a file that isn't there.
std::string commandLineMissingMessage();

}  // namespace lumiquilt
