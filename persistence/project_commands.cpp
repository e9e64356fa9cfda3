// Saving and opening projects from the windows.
#include "persistence/project_commands.h"

#include <QFontMetrics>

#include "core/files.h"
#include "core/form_montage.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "display/window_geometry.h"
#include "persistence/project_file.h"
#include "series/picture_io.h"

namespace lumiquilt {

namespace {

constexpr const char* kNoMontageMessage =
    "You have to have a Montage image visible in order to save a project.";
constexpr const char* kNoMontageTitle = "Sorry...";

// The stage groups of the two commands; the group of a failure decides its reaction.
enum Stage : int {
    kSaveVisibility = 0,
    kSaveDialogSetUp = 8000,
    kSaveDialog = 8300,  // Cancel arrives here: leave silently
    kSaveWrite = 8500,   // the write message
    kSavePicture = 33000,
    kOpenDialogSetUp = 7000,
    kOpenDialog = 7300,  // Cancel arrives here: leave silently
    kOpenName = 7400,
    kOpenRead = 7500,  // the read message
    kOpenLabel = 33500,
};

std::string textOf(const QLineEdit* field) {
    return field->text().toStdString();
}

// Where an opened project's values go in the main window.
class WindowRestore : public ProjectRestore {
  public:
    explicit WindowRestore(FormMontage& form) : f(form) {}

    void setFirstFileName(const std::string& text) override {
        f.textFileName->setText(QString::fromStdString(text));
    }
    void uncheckMethods() override {
        for (QAction* entry : f.m.mnusimpleCol) {
            entry->setChecked(false);
        }
    }
    void checkMethod(int index) override {
        f.m.mnusimpleCol.at(static_cast<size_t>(index))->setChecked(true);
    }
    void setIncrementText(const std::string& text) override {
        f.TextIncrement->setText(QString::fromStdString(text));
    }
    int imageCount() const override { return f.state().imageCount; }
    void offsetsOn() override {
        f.m.mnuAddOffsets->setChecked(true);
        f.statusWindow()->setVisible(true);
    }
    void placeMark(int n, double centreX, double centreY) override {
        PictureBox* box = f.pictureWindow(n)->PictureFile;
        box->setMarksVisible(true);
        for (int member = 0; member < 2; ++member) {
            const QRect& circle = box->Shape1(member);
            box->moveShape(member, toInt16(centreX - circle.width() / 2.0),
                           toInt16(centreY - circle.height() / 2.0));
        }
    }
    void marksPlaced() override {
        f.offsets().updateTargetStatus();
        f.offsets().placeStatusStrip();
    }
    void setOffsetDisplay(OffsetDisplay display) override {
        f.m.mnuActivateOffsetsMin->setChecked(display == OffsetDisplay::minimum);
        f.m.mnuActivateOffsetsMax->setChecked(display == OffsetDisplay::maximum);
        f.m.mnuActivateOffsetsSame->setChecked(display == OffsetDisplay::same);
    }
    void offsetsOff() override {
        f.m.mnuAddOffsets->setChecked(false);
        f.statusWindow()->setVisible(false);
        for (int n = 1; n <= imageCount(); ++n) {
            f.pictureWindow(n)->PictureFile->setMarksVisible(false);
        }
    }
    void setIgnored(int index, bool ignored) override {
        f.m.mnuignoreImage.at(static_cast<size_t>(index))->setChecked(ignored);
    }

  private:
    FormMontage& f;
};

}  // namespace

ProjectCommands::ProjectCommands(FormMontage& form) : QObject(&form), f(form) {}

ProjectCommands& ProjectCommands::of(FormMontage& form) {
    auto* commands = form.findChild<ProjectCommands*>(QString(), Qt::FindDirectChildrenOnly);
    if (commands == nullptr) {
        commands = new ProjectCommands(form);
    }
    return *commands;
}

void ProjectCommands::connectMontageWindow(FormMontagePicture* window) {
    connect(window->mnuSaveProject, &QAction::triggered, this,
            [this, window] { mnuSaveProject_Click(window); });
}

void ProjectCommands::mnuSave_Click() {
    saveProject(nullptr);
}

void ProjectCommands::mnuSaveProject_Click(const FormMontagePicture* window) {
    saveProject(window);
}

// from is null for the main window's command, else the montage window whose popup
// was used.
void ProjectCommands::saveProject(const FormMontagePicture* from) {
    if (f.runInProgress()) {
        return;
    }
    const bool mainCommand = from == nullptr;
    const char* routine = mainCommand ? "mnuSave" : "mnuSaveProject";
    ProgramState& s = f.state();
    int stage = kSaveVisibility;
    try {
        if (mainCommand && !f.montageWindow()->isVisible()) {
            stage = kSaveDialogSetUp;
            f.ui().messageBox(kNoMontageMessage, kNoMontageTitle, MessageIcon::exclamation);
            return;
        }

        stage = kSaveDialogSetUp;
        FileDialogRequest request;
        request.filter = std::string(kProjectFilter);
        if (mainCommand && !isAbsoluteName(textOf(f.textFileName))) {
            // Stays in the field, whatever the dialog then does.
            f.textFileName->setText(QString::fromStdString(s.appPath + textOf(f.textFileName)));
        }
        const std::string fieldText = textOf(f.textFileName);
        if (mainCommand && fieldText.find('.') != std::string::npos) {
            stage = kSaveDialog;
        }
        request.fileName = proposeProjectName(fieldText);

        stage = kSaveDialog;
        if (!mainCommand) {
            request.initialFolder = s.appPath;
        }
        const std::optional<std::string> chosen = f.ui().saveFileName(request);
        if (!chosen) {
            return;
        }
        const std::string name = *chosen;

        std::string stored;
        bool found = false;
        if (mainCommand) {
            stage = kSaveWrite;
            f.addRecentFile(recentProjectItem(name));
        } else {
            f.addRecentFile(recentProjectItem(name));
            // A method window stores its own report.
            for (int i = 0; i < 8; ++i) {
                if (f.hasMethodWindow(i) && f.methodWindow(i)->Caption() == from->Caption()) {
                    stored = s.methodProperties.at(static_cast<size_t>(i));
                    found = true;
                    break;
                }
            }
        }

        stage = kSaveWrite;
        if (!found) {
            stored = s.propertiesString;
        }
        ProjectSave save(name);
        save.writeText(stored);
        s.outputFileName = save.companionName();

        // The main montage's picture, whichever window the command came from.
        stage = kSavePicture;
        const QImage picture = f.montageWindow()->PictureFile->picture();
        save.writeCompanion(
            [&picture](const std::string& temporary) { savePicture(picture, temporary, "BMP"); });

        stage = kSaveWrite;
        save.commit();
    } catch (const RuntimeError& error) {
        if (stage == kSaveDialog) {
            return;
        }
        if (stage == kSaveWrite) {
            f.ui().messageBox(projectWriteMessage(error.description()),
                              std::string(kProjectMessageTitle), MessageIcon::critical);
            return;
        }
        f.ui().messageBox(generalMessage(error, stage, routine), std::string(kGeneralMessageTitle),
                          MessageIcon::critical);
    }
}

void ProjectCommands::mnuOpenProject_Click() {
    if (f.runInProgress()) {
        return;
    }
    ProgramState& s = f.state();
    int stage = kOpenDialogSetUp;
    try {
        std::string name;
        const std::string fieldText = textOf(f.textFileName);
        if (isRecentProjectItem(fieldText)) {
            // Chosen from the recent list: no dialog.
            name = projectNameFromRecentItem(fieldText);
            stage = kOpenName;
        } else {
            FileDialogRequest request;
            request.filter = std::string(kProjectFilter);
            request.fileName.clear();
            stage = kOpenDialog;
            request.initialFolder = fieldText;
            const std::optional<std::string> chosen = f.ui().openFileName(request);
            if (!chosen) {
                return;
            }
            stage = kOpenName;
            name = trimmed(*chosen);
        }
        if (!isAbsoluteName(name)) {
            name = s.appPath + name;
        }
        if (!fileExists(name)) {
            f.ui().messageBox(std::string(kProjectMissingMessage),
                              std::string(kProjectMessageTitle), MessageIcon::critical);
            f.textFileName->setText(QString());
            return;
        }

        stage = kOpenRead;
        f.addRecentFile(recentProjectItem(name));
        WindowRestore restore(f);
        restoreProject(name, restore);

        // The run reloads the series and arranges the windows, but makes no montage:
        // the stored one takes its place.
        s.montageFromProject = kTrue;
        f.CommandGo_Click();

        s.propertiesString.clear();
        f.usedWindow()->LabelUsed->clear();
        ProjectText text = readProjectText(name);
        s.propertiesString = std::move(text.propertiesString);
        f.usedWindow()->LabelUsed->setText(QString::fromStdString(text.usedCaption));
        showStoredMontage(name);

        stage = kOpenLabel;
        FormUsed* used = f.usedWindow();
        used->LabelUsed->setGeometry(s.sizingFrameHeight, s.dialogFrameHeight, used->width(),
                                     used->height());
    } catch (const RuntimeError& error) {
        if (stage == kOpenDialog) {
            return;
        }
        if (stage == kOpenRead) {
            f.ui().messageBox(projectReadMessage(error.description()),
                              std::string(kProjectMessageTitle), MessageIcon::critical);
            return;
        }
        f.ui().messageBox(generalMessage(error, stage, "mnuOpenProject"),
                          std::string(kGeneralMessageTitle), MessageIcon::critical);
    }
}

void ProjectCommands::showStoredMontage(const std::string& projectName) {
    ProgramState& s = f.state();
    FormMontagePicture* montage = f.montageWindow();
    montage->PictureFile->setPicture(loadPicture(companionPictureName(projectName)));
    // The run left the montage window hidden, as it does whenever it skips the loop.
    montage->show();
    montage->raise();

    // The used-blocks window is as wide as one digit per block and as high as the
    // stored caption.
    if (s.increment == 0) {
        throw RuntimeError(kDivisionByZero);
    }
    FormUsed* used = f.usedWindow();
    const QFontMetrics metrics(used->font());
    QString caption = used->LabelUsed->text();
    caption.remove('\r');
    const int textHeight =
        metrics.boundingRect(QRect(0, 0, 1 << 20, 1 << 20), Qt::AlignLeft | Qt::AlignTop, caption)
            .height();
    const double tpp = s.twipsPerPixel;
    moveWindowTwips(used, s, 0, (s.captionHeight + s.menuHeight + f.textFileName->height()) * tpp,
                    ((s.imageWidth / s.increment + 1) * metrics.horizontalAdvance("3") +
                     4.0 * s.sizingFrameHeight) *
                        tpp,
                    (s.menuHeight + s.sizingFrameHeight + textHeight) * tpp);
}

}  // namespace lumiquilt
