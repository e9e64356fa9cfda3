#include "display/modal_ui.h"

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QUrl>

namespace lumiquilt {

namespace {

QString q(const std::string& s) {
    return QString::fromStdString(s);
}

// Where a file dialog opens: the proposed name, in the initial folder when the name
// has none of its own and the folder is one. Without a name, an initial "folder"
// that names a file opens its folder with the name box empty.
QString dialogStart(const FileDialogRequest& request) {
    if (request.fileName.empty()) {
        const QFileInfo start(q(request.initialFolder));
        if (request.initialFolder.empty() || start.isDir()) {
            return q(request.initialFolder);
        }
        return start.path();
    }
    const QString name = q(request.fileName);
    const QFileInfo folder(q(request.initialFolder));
    if (QFileInfo(name).isRelative() && !request.initialFolder.empty() && folder.isDir()) {
        return QDir(folder.filePath()).filePath(name);
    }
    return name;
}

}  // namespace

QString qtFilterFrom(const std::string& filter) {
    const QStringList parts = q(filter).split('|');
    QStringList entries;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts[i + 1];
        patterns.replace(';', ' ');
        patterns = patterns.simplified();
        const QString caption = parts[i];
        // Qt takes the patterns from the caption's last brackets and shows the caption
        // as it is, so a caption that names its patterns already gets no second copy.
        if (caption.trimmed() == patterns) {
            entries << patterns;
            continue;
        }
        QString base = caption.trimmed();
        const qsizetype open = base.lastIndexOf('(');
        if (open >= 0 && base.endsWith(')')) {
            QString named = base.mid(open + 1, base.size() - open - 2);
            named.replace(';', ' ');
            if (named.simplified() == patterns) {
                base = caption.left(caption.lastIndexOf('('));
                entries << base + "(" + patterns + ")";
                continue;
            }
        }
        entries << base + " (" + patterns + ")";
    }
    return entries.join(";;");
}

MessageResult QtModalUi::messageBox(const std::string& text, const std::string& title,
                                    MessageIcon icon, MessageButtons buttons) {
    QMessageBox box(m_parent);
    box.setText(q(text));
    box.setWindowTitle(q(title));
    switch (icon) {
        case MessageIcon::none:
            box.setIcon(QMessageBox::NoIcon);
            break;
        case MessageIcon::critical:
            box.setIcon(QMessageBox::Critical);
            break;
        case MessageIcon::question:
            box.setIcon(QMessageBox::Question);
            break;
        case MessageIcon::exclamation:
            box.setIcon(QMessageBox::Warning);
            break;
        case MessageIcon::information:
            box.setIcon(QMessageBox::Information);
            break;
    }
    switch (buttons) {
        case MessageButtons::ok:
            box.setStandardButtons(QMessageBox::Ok);
            break;
        case MessageButtons::okCancel:
            box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
            break;
        case MessageButtons::yesNo:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
            break;
        case MessageButtons::yesNoCancel:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
            break;
    }
    switch (box.exec()) {
        case QMessageBox::Cancel:
            return MessageResult::cancel;
        case QMessageBox::Yes:
            return MessageResult::yes;
        case QMessageBox::No:
            return MessageResult::no;
        default:
            return MessageResult::ok;
    }
}

std::optional<std::string> QtModalUi::openFileName(const FileDialogRequest& request) {
    const QString name = QFileDialog::getOpenFileName(
        m_parent, q(request.title), dialogStart(request), qtFilterFrom(request.filter));
    if (name.isEmpty()) {
        return std::nullopt;
    }
    return name.toStdString();
}

std::optional<std::string> QtModalUi::saveFileName(const FileDialogRequest& request) {
    // The dialog asks before a file is replaced.
    const QString name = QFileDialog::getSaveFileName(
        m_parent, q(request.title), dialogStart(request), qtFilterFrom(request.filter));
    if (name.isEmpty()) {
        return std::nullopt;
    }
    return name.toStdString();
}

std::optional<uint32_t> QtModalUi::chooseColor(uint32_t initial) {
    const QColor start(initial & 0xFF, (initial >> 8) & 0xFF, (initial >> 16) & 0xFF);
    const QColor chosen = QColorDialog::getColor(start, m_parent);
    if (!chosen.isValid()) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(chosen.red() | (chosen.green() << 8) | (chosen.blue() << 16));
}

void QtModalUi::setClipboardImage(const QImage& image) {
    QApplication::clipboard()->clear();
    QApplication::clipboard()->setImage(image);
}

bool QtModalUi::openWithDesktop(const std::string& fileOrAddress) {
    const QString target = q(fileOrAddress);
    const QUrl url = target.contains("://") ? QUrl(target) : QUrl::fromLocalFile(target);
    return QDesktopServices::openUrl(url);
}

bool QtModalUi::startProgram(const std::string& program, const QStringList& arguments) {
    return QProcess::startDetached(q(program), arguments);
}

bool QtModalUi::choosePrinter(QPrinter& printer) {
    QPrintDialog dialog(&printer, m_parent);
    return dialog.exec() == QDialog::Accepted;
}

bool ScriptedModalUi::choosePrinter(QPrinter& printer) {
    if (duringDialog) {
        duringDialog();
    }
    if (printerAnswers.empty() || !printerAnswers.front()) {
        if (!printerAnswers.empty()) {
            printerAnswers.pop_front();
        }
        return false;
    }
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(*printerAnswers.front()));
    printerAnswers.pop_front();
    return true;
}

MessageResult ScriptedModalUi::messageBox(const std::string& text, const std::string& title,
                                          MessageIcon icon, MessageButtons buttons) {
    messages.push_back({text, title, icon, buttons});
    if (!messageAnswers.empty()) {
        const MessageResult answer = messageAnswers.front();
        messageAnswers.pop_front();
        return answer;
    }
    return buttons == MessageButtons::ok || buttons == MessageButtons::okCancel
               ? MessageResult::ok
               : MessageResult::yes;
}

std::optional<std::string> ScriptedModalUi::openFileName(const FileDialogRequest& request) {
    fileRequests.push_back(request);
    if (duringDialog) {
        duringDialog();
    }
    if (fileAnswers.empty()) {
        return std::nullopt;
    }
    auto answer = fileAnswers.front();
    fileAnswers.pop_front();
    return answer;
}

std::optional<std::string> ScriptedModalUi::saveFileName(const FileDialogRequest& request) {
    return openFileName(request);
}

std::optional<uint32_t> ScriptedModalUi::chooseColor(uint32_t initial) {
    colorRequests.push_back(initial);
    if (colorAnswers.empty()) {
        return std::nullopt;
    }
    auto answer = colorAnswers.front();
    colorAnswers.pop_front();
    return answer;
}

void ScriptedModalUi::setClipboardImage(const QImage& image) {
    clipboard.push_back(image);
}

bool ScriptedModalUi::openWithDesktop(const std::string& fileOrAddress) {
    opened.push_back(fileOrAddress);
    return true;
}

bool ScriptedModalUi::startProgram(const std::string& program, const QStringList& arguments) {
    started.emplace_back(program, arguments);
    return !reallyStartPrograms || QProcess::startDetached(q(program), arguments);
}

}  // namespace lumiquilt
