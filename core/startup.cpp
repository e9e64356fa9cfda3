#include "core/startup.h"

#include <QCoreApplication>

#include "core/command_line.h"
#include "core/files.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "core/window_scale.h"
#include "display/splash.h"
#include "display/window_geometry.h"

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

void readFactorSettings(ProgramState& s, const Settings& settings) {
    s.autoSmooth = toInt16(settings.readNumber("autoSmooth"));
    s.edgeFactor = static_cast<float>(settings.readNumber("edgeFactor") / 100);
    s.focusFactor = static_cast<float>(settings.readNumber("focusFactor") / 100);
    s.diffFactor = toInt16(settings.readNumber("diffFactor"));
    s.edgefactor2 = static_cast<float>(settings.readNumber("edgefactor2") / 10);
    s.shortcutEnabled = toInt16(settings.readNumber("shortcut"));
    s.rightMouseEnabled = settings.readNumber("rightmouse") != 0 ? 1 : 0;
}

// A settings value that leaves 16 bits is read as 0 rather than stop the start.
int16_t toInt16OrZero(double value) {
    try {
        return toInt16(value);
    } catch (const RuntimeError&) {
        return 0;
    }
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

    try {
        readFactorSettings(s, settings);
    } catch (const RuntimeError&) {
        // A value beyond 16 bits in the file: the factors keep what they could read.
    }

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

    if (line.hasFile()) {
        // The name keeps its case: the file system tells names apart by it.
        form.textFileName->setText(QString::fromStdString(expandFileName(line.filePart)));
    } else {
        const std::string stored = settings.readKey("filename");
        if (stored.size() > 2) {
            form.textFileName->setText(QString::fromStdString(trimmed(stored)));
        }
    }
    if (line.incrementText) {
        form.TextIncrement->setText(QString::fromStdString(*line.incrementText));
    } else {
        form.TextIncrement->setText(QString::fromStdString(trimmed(settings.readKey("Increment"))));
    }
    form.montageWindow();

    // A method number outside the menu falls back to the first method.
    int method = toInt16OrZero(settings.readNumber("Montage method"));
    if (method < 0 || method >= kMethodCount) {
        method = 0;
    }
    form.mnusimpleCol_Click(method);
    s.showUsedWindow = toInt16OrZero(settings.readNumber("Originating image"));
    form.recentFiles().load(settings);
    form.refreshRecentMenu();
    form.setTargetColor(settings.readNumber("Target color"));
    if (s.shortcutEnabled == 1 && hooks.makeDesktopShortcut) {
        hooks.makeDesktopShortcut();
    }
    return result;
}

}  // namespace lumiquilt
