// Desktop ties for the freedesktop.org desktops (GNOME, KDE, Xfce and others): the
// shortcut is a desktop entry on the desktop, and the verb a desktop entry in the
// user's applications folder that offers the program for the pictures it reads.
// The verb's key is the folder "lumiquilt" there, its command the entry inside
// (desktop file ID "lumiquilt-open-with.desktop").

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>

#include "shell/desktop_ties.h"

namespace lumiquilt::desktop_ties {

namespace {

constexpr const char* kVerbFolder = "lumiquilt";
constexpr const char* kVerbEntry = "open-with.desktop";
constexpr const char* kShortcutEntry = "Lumiquilt.desktop";
constexpr const char* kVerbMimeTypes = "image/bmp;image/jpeg;image/gif;";

// A value as a desktop entry's string holds it: backslash and control characters
// escaped.
QString entryString(const QString& value) {
    QString out;
    for (const QChar c : value) {
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c == '\r') {
            out += "\\r";
        } else {
            out += c;
        }
    }
    return out;
}

// One argument of an Exec line, always quoted so that blanks and the shell's
// characters in a folder name are taken as they stand; inside the quotes
// ", `, $ and \ take a backslash, and a literal % is doubled.
QString execArgument(const QString& argument) {
    QString quoted = "\"";
    for (const QChar c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '%') {
            quoted += "%%";
        } else {
            quoted += c;
        }
    }
    quoted += '"';
    return entryString(quoted);
}

QString programPath(const ShellPlaces& places) {
    return QString::fromStdString(places.appPath + places.programName);
}

// The icon that stands beside the program; the theme's when there is none.
QString iconValue(const ShellPlaces& places) {
    const QString beside = QString::fromStdString(places.appPath) + "lumiquilt.svg";
    return QFileInfo::exists(beside) ? entryString(beside) : QString("org.example.lumiquilt");
}

bool writeEntry(const QString& path, const QString& text, bool executable) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    file.write(text.toUtf8());
    if (!file.commit()) {
        return false;
    }
    if (executable) {
        // File managers start a desktop entry on the desktop only when it may be run.
        QFile::setPermissions(
            path, QFile::permissions(path) | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther);
    }
    return true;
}

// Where the folder already keeps a MIME cache, file managers read the cache
// rather than the entries, so it must learn of the change.
void refreshMimeCache(const ShellPlaces& places) {
    const QString folder = QString::fromStdString(places.applicationsFolder);
    if (!QFileInfo::exists(folder + "/mimeinfo.cache")) {
        return;
    }
    const QString tool = QStandardPaths::findExecutable("update-desktop-database");
    if (!tool.isEmpty()) {
        QProcess::execute(tool, {"-q", folder});
    }
}

QString verbFolder(const ShellPlaces& places) {
    return QString::fromStdString(places.applicationsFolder) + "/" + kVerbFolder;
}

}  // namespace

std::string desktopFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation).toStdString();
}

std::string applicationsFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation).toStdString();
}

std::string shortcutFile(const ShellPlaces& places) {
    return places.desktopFolder + "/" + kShortcutEntry;
}

std::string verbCommandFile(const ShellPlaces& places) {
    return verbFolder(places).toStdString() + "/" + kVerbEntry;
}

bool writeShortcut(const ShellPlaces& places) {
    const QString folder = QString::fromStdString(places.desktopFolder);
    if (folder.isEmpty() || !QDir().mkpath(folder)) {
        return false;
    }
    const QString text = QString(
                             "[Desktop Entry]\n"
                             "Type=Application\n"
                             "Name=Lumiquilt\n"
                             "Comment=This is my Lumiquilt shortcut!\n"
                             "Exec=%1\n"
                             "Icon=%2\n"
                             "Path=%3\n"
                             "Terminal=false\n")
                             .arg(execArgument(programPath(places)), iconValue(places),
                                  entryString(QString::fromStdString(places.appPath)));
    return writeEntry(QString::fromStdString(shortcutFile(places)), text, true);
}

bool createVerbKey(const ShellPlaces& places) {
    return !places.applicationsFolder.empty() && QDir().mkpath(verbFolder(places));
}

bool setVerbCommand(const ShellPlaces& places) {
    const QString text =
        QString(
            "[Desktop Entry]\n"
            "Type=Application\n"
            "Name=Lumiquilt\n"
            "Comment=Make a montage of the series that starts with this picture\n"
            "Exec=%1 %f\n"
            "Icon=%2\n"
            "MimeType=%3\n"
            "NoDisplay=true\n"
            "Terminal=false\n")
            .arg(execArgument(programPath(places)), iconValue(places), kVerbMimeTypes);
    const bool written = writeEntry(QString::fromStdString(verbCommandFile(places)), text, false);
    refreshMimeCache(places);
    return written;
}

bool deleteVerbCommand(const ShellPlaces& places) {
    const bool removed = QFile::remove(QString::fromStdString(verbCommandFile(places)));
    refreshMimeCache(places);
    return removed;
}

bool deleteVerbKey(const ShellPlaces& places) {
    // rmdir refuses a folder that still holds anything, as a key with a command.
    return QDir().rmdir(verbFolder(places));
}

}  // namespace lumiquilt::desktop_ties
