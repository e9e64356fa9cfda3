#include "core/startup.h"

#include <QCoreApplication>

#include "core/command_line.h"
#include "core/files.h"
#include "core/text.h"
#include "core/window_scale.h"
#include "display/splash.h"
#include "display/window_geometry.h"
#include "persistence/preferences.h"

namespace lumiquilt {

std::string commandLineMissingMessage() {
    return "I am sorry, but I cannot find the file that is on the Shortcut or Command Line used "
           "to call this  'Lumiquilt'  program.";
}

namespace {

bool isProgramPicture(const std::string& name) {
    const std::string lower = toLowerUtf8(name);
    if (lower.size() < 4) {
        return false;
    }
    const std::string ending = lower.substr(lower.size() - 4);
    return ending == ".jpg" || ending == ".bmp" || ending == ".gif";
}

}  // namespace

StartupHooks programStartupHooks(ModalUi& ui, const ShellPlaces& places) {
    StartupHooks hooks;
    hooks.showSplash = [&ui] { showSplash(ui); };
    hooks.makeDesktopShortcut = [places] { makeDesktopShortcut(places); };
    return hooks;
}

StartupResult startLumiquilt(const std::vector<std::string>& arguments, ProgramState& s,
                             ModalUi& ui, Settings& settings, QSize screenPixels,
                             const StartupHooks& hooks) {
    StartupResult result;
    applyScreenMetrics(s, readScreenMetrics());
    initialiseProgramState(s);

    CommandLine line = parseCommandLine(arguments);
    s.commandLine = line.line;
    if (line.hasFile()) {
        if (!fileExists(line.filePart)) {
            ui.messageBox(commandLineMissingMessage(), "The command line was " + line.filePart,
                          MessageIcon::exclamation);
            // Start as if the line had been empty: its switches go with it.
            line = CommandLine{};
            s.commandLine.clear();
        } else if (!isProgramPicture(expandFileName(line.filePart))) {
            ui.openWithDesktop(expandFileName(line.filePart));
            QCoreApplication::processEvents();
            result.handedToDesktop = true;
            return result;
        }
    }

    if (hooks.showSplash) {
        hooks.showSplash();
    }

    readSettingsBeforeWindows(s, settings);

    double width = screenPixels.width();
    double height = screenPixels.height();
    if (line.resolution) {
        width = line.resolution->first;
        height = line.resolution->second;
    }
    const WindowScale scale = computeWindowScale(width, height, s.twipsPerPixel, s.twipsPerPixel);
    s.scaleX = scale.scaleX;
    s.scaleY = scale.scaleY;

    result.window = std::make_unique<FormMontage>(s, ui, settings);
    FormMontage& form = *result.window;
    form.scaleWindow(s.scaleX, s.scaleY);
    form.loadEvent();
    form.move(0, 0);
    form.show();

    const SettingsAfterWindows stored = readSettingsAfterWindows(settings);
    if (line.hasFile()) {
        // The name keeps its case: the file system tells names apart by it.
        form.textFileName->setText(QString::fromStdString(expandFileName(line.filePart)));
    } else if (stored.fileName.size() > 2) {
        form.textFileName->setText(QString::fromStdString(trimmed(stored.fileName)));
    }
    form.TextIncrement->setText(
        QString::fromStdString(line.incrementText ? *line.incrementText : stored.incrementText));
    form.montageWindow();

    // A method number outside the menu falls back to the first method.
    const int method =
        stored.methodIndex >= 0 && stored.methodIndex < kMethodCount ? stored.methodIndex : 0;
    form.mnusimpleCol_Click(method);
    s.showUsedWindow = stored.showUsedWindow;
    form.recentFiles() = stored.recent;
    form.refreshRecentMenu();
    form.setTargetColor(stored.targetColor);
    if (s.shortcutEnabled == 1 && hooks.makeDesktopShortcut) {
        hooks.makeDesktopShortcut();
    }
    return result;
}

}  // namespace lumiquilt
