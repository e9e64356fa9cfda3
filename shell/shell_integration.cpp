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

void addContextVerb(const ShellPlaces& places) {
    // A verb that can't be made is not reported; the setting says on all the same.
    if (desktop_ties::createVerbKey(places)) {
        desktop_ties::setVerbCommand(places);
    }
}

void removeContextVerb(const ShellPlaces& places, ModalUi& ui) {
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

void DesktopShellTies::makeDesktopShortcut() {
    lumiquilt::makeDesktopShortcut(m_places);
}

void DesktopShellTies::addContextMenuVerb() {
    addContextVerb(m_places);
}

void DesktopShellTies::removeContextMenuVerb() {
    removeContextVerb(m_places, m_ui);
}

}  // namespace lumiquilt
