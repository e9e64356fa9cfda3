#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QScreen>
#include <QTimer>

#include "core/files.h"
#include "core/startup.h"
#include "display/artwork.h"
#include "persistence/form_preferences.h"
#include "series/picture_io.h"
#include "shell/shell_integration.h"

int main(int argc, char** argv) {
    using namespace lumiquilt;
    QApplication app(argc, argv);
    QApplication::setApplicationName("Lumiquilt");
    QApplication::setOrganizationName("Tarnhollow Software");
    // Ties the windows to the installed menu entry and its icon.
    QGuiApplication::setDesktopFileName("org.example.lumiquilt");
    QApplication::setWindowIcon(QIcon(QPixmap::fromImage(appIconImage(256))));
    configurePictureReading();

    ProgramState state;
    state.appPath = applicationFolder(argv[0]);
    Settings settings(settingsFilePath(state.appPath));
    QtModalUi ui;

    std::vector<std::string> arguments;
    const QStringList args = QApplication::arguments();
    for (qsizetype i = 1; i < args.size(); ++i) {
        arguments.push_back(args[i].toStdString());
    }
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize screenPixels = screen != nullptr ? screen->geometry().size() : QSize(1024, 768);

    const ShellPlaces places = shellPlaces(state.appPath);
    StartupResult started = startLumiquilt(arguments, state, ui, settings, screenPixels,
                                           programStartupHooks(ui, places));
    if (started.handedToDesktop) {
        return 0;
    }
    ui.setParent(started.window.get());
    DesktopShellTies ties(places, ui);
    PreferencesCommands::of(*started.window).setShellTies(&ties);
    // Without a window manager no activation may ever come; the first return to
    // the event loop then stands in for it.
    QTimer::singleShot(0, started.window.get(), &FormMontage::activateFirstTime);
    return QApplication::exec();
}
