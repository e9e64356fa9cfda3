#include "shell/shell_integration.h"

#include <QCoreApplication>

#include "shell/desktop_ties.h"

namespace lumiquilt {

ShellPlaces shellPlaces(const std::string& appPath) {
    ShellPlaces places;
    places.appPath = appPath;
    places.desktopFolder = desktop_ties::desktopFolder();
    places.applicationsFolder = desktop_ties::applicationsFolder();
    return places;
}

bool makeDesktopShortcut(const ShellPlaces& places) {
    return desktop_ties::writeShortcut(places);
}

void updateContextVerb(bool checkRight, int16_t rightMouseEnabled, const ShellPlaces& places,
                       ModalUi& ui) {
    if (checkRight && rightMouseEnabled == 0) {
        // A verb that can't be made is not reported; the setting says on all the same.
        if (desktop_ties::createVerbKey(places)) {
            desktop_ties::setVerbCommand(places);
        }
    } else if (!checkRight && rightMouseEnabled == 1) {
        bool removed = desktop_ties::deleteVerbCommand(places);
        QCoreApplication::processEvents();
        if (removed) {
            removed = desktop_ties::deleteVerbKey(places);
        }
        if (removed) {
            ui.messageBox(kVerbRemovedText, kVerbRemovedTitle, MessageIcon::information);
        } else {
            ui.messageBox(kVerbNotRemovedText, kVerbNotRemovedTitle, MessageIcon::information);
        }
    }
    // A box left as it was touches nothing: a verb removed by hand stays removed.
}

}  // namespace lumiquilt
