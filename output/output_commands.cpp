// Save As, the clipboard and the outside editor.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <random>

#include "core/form_montage.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "display/window_geometry.h"
#include "engine/montage_run.h"
#include "output/form_gif.h"
#include "output/output_names.h"
#include "series/picture_io.h"

namespace lumiquilt {

namespace {

double randomUnit() {
    static std::mt19937 generator{std::random_device{}()};
    return std::uniform_real_distribution<double>(0.0, 1.0)(generator);
}

// Deletes a file; false when there was one and it stayed.
bool removeFile(const std::string& name) {
    QFile file(QString::fromStdString(name));
    return !file.exists() || file.remove();
}

}  // namespace

void FormMontage::connectPictureCommands(FormPicture* w) {
    connect(w->mnuSaveAs, &QAction::triggered, this, [this, w] { SaveAsSub(w, " copy"); });
    connect(w->mnucopy, &QAction::triggered, this, [this, w] { copyToClipboard(w); });
    connect(w->mnuEditor, &QAction::triggered, this, [this, w] { openInEditor(w); });
    connect(w->mnuPrint100, &QAction::triggered, this,
            [this, w] { printPicture(w, PrintSize::natural, w); });
    connect(w->mnuPrint, &QAction::triggered, this,
            [this, w] { printPicture(w, PrintSize::fitToPage, w); });
    connect(w->mnuPrintHalf, &QAction::triggered, this,
            [this, w] { printPicture(w, PrintSize::halfPage, w); });
}

void FormMontage::connectMontageCommands(FormMontagePicture* w) {
    // Copy and print take the main montage, also from a method window; Save As and
    // the editor take the window's own picture.
    connect(w->mnuSaveAs, &QAction::triggered, this, [this, w] { SaveAsSub(w, " montage"); });
    connect(w->mnucopy, &QAction::triggered, this, [this] { copyToClipboard(montageWindow()); });
    connect(w->mnuEditor, &QAction::triggered, this, [this, w] { openInEditor(w); });
    connect(w->mnuPrint100, &QAction::triggered, this,
            [this] { printPicture(montageWindow(), PrintSize::natural); });
    connect(w->mnuPrint, &QAction::triggered, this,
            [this] { printPicture(montageWindow(), PrintSize::fitToPage); });
    connect(w->mnuPrintHalf, &QAction::triggered, this,
            [this] { printPicture(montageWindow(), PrintSize::halfPage); });
    connect(w->mnuSmooth, &QAction::triggered, this, [this, w] {
        // A method window is found by its caption, and the seven method pictures are
        // read into their slots before the step.
        if (w == m_montageWindow || w->Caption() == montageWindow()->Caption()) {
            smoothMontage(m_state.buffers, 999, kTrue);
            return;
        }
        for (int i = 0; i < static_cast<int>(m_methodWindows.size()); ++i) {
            if (m_methodWindows[static_cast<size_t>(i)] == nullptr ||
                m_methodWindows[static_cast<size_t>(i)]->Caption() != w->Caption()) {
                continue;
            }
            std::vector<PictureView> views;
            for (int slot = 0; slot < 7; ++slot) {
                views.push_back(viewOf(methodWindow(slot)->PictureFile->picture()));
            }
            loadMethodPixelBuffers(m_state, views);
            smoothMontage(m_state.buffers, i, kTrue);
            return;
        }
    });
}

void FormMontage::waitForOutsideProgram() {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < static_cast<qint64>(outsideProgramWait * 1000)) {
        QCoreApplication::processEvents();
        QThread::msleep(10);
    }
}

bool FormMontage::montageOnView(const char* verb) {
    if (m_montageWindow != nullptr && m_montageWindow->isVisible()) {
        return true;
    }
    m_ui.messageBox(std::string("You have not got a Montage image to ") + verb + ".",
                    "Make one, then try again", MessageIcon::critical);
    return false;
}

void FormMontage::mnuJPG_Click() {
    if (montageOnView("save")) {
        SaveAsSub(m_montageWindow, " montage");
    }
}

void FormMontage::SaveAsSub(PictureWindow* window, const std::string& suffix) {
    ProgramState& s = m_state;
    int stage = 8000;
    try {
        FileDialogRequest request;
        request.filter = "*.bmp|*.bmp|*.jpg|*.jpg|*.gif|*.gif|";
        request.fileName = proposedSaveName(window->Caption().toStdString(), suffix);
        request.initialFolder = s.appPath;
        const QImage picture = window->PictureFile->picture();
        for (;;) {
            stage = 8300;
            const std::optional<std::string> chosen = m_ui.saveFileName(request);
            if (!chosen) {
                return;  // Cancel leaves silently
            }
            s.outputFileName = *chosen;
            const SaveRoad road = saveRoadFor(s.outputFileName);

            if (road == SaveRoad::jpeg) {
                stage = 8500;  // failures here are passed over
                std::string temporary;
                try {
                    temporary = temporaryPictureName(privateTemporaryFolder(), randomUnit);
                    removeFile(temporary);
                    savePicture(picture, temporary, "BMP");
                    QCoreApplication::processEvents();
                    m_ui.startProgram(s.appPath + "CSTjpeg",
                                      {QString::fromStdString(temporary + "," + s.outputFileName)});
                    QCoreApplication::processEvents();
                } catch (const RuntimeError&) {
                }
                stage = 8600;
                waitForOutsideProgram();
                // A temporary file that was never written can't be deleted either.
                if (temporary.empty() || !QFile::exists(QString::fromStdString(temporary))) {
                    throw RuntimeError(kFileNotFound);
                }
                if (!removeFile(temporary)) {
                    throw RuntimeError(kPermissionDenied);
                }
                return;
            }

            stage = 8600;
            if (road == SaveRoad::gif) {
                if (m_ui.messageBox(
                        "GIF format can only cope with a 256 color palette, ie not as many as your "
                        "screen.   I use a 256 half tone palette.   You may find the picture "
                        "colours "
                        "skewed because of this.   Do you really want to make this GIF file?",
                        "A BMP or JPG format is much better", MessageIcon::information,
                        MessageButtons::yesNo) == MessageResult::no) {
                    return;
                }
                const double windowWidth = windowWidthTwips(window, s) / s.twipsPerPixel;
                const double windowHeight = windowHeightTwips(window, s) / s.twipsPerPixel;
                if (picture.width() > windowWidth || picture.height() > windowHeight) {
                    const std::string size =
                        std::to_string(picture.width()) + "x" + std::to_string(picture.height());
                    if (m_ui.messageBox(
                            "The .GIF format will only allow the saving of screen size images.   "
                            "Your image is larger than this  (" +
                                size +
                                ").    The best format is .BMP which allows you to save the whole "
                                "image.   Do you want to change to .BMP?",
                            "You can always save under both formats", MessageIcon::question,
                            MessageButtons::yesNo) == MessageResult::yes) {
                        request.fileName = beforeFirstDot(s.outputFileName);
                        continue;  // the dialog again; the new name chooses the road
                    }
                }
                FormGIF form(window, m_ui, picture, s.outputFileName);
                form.exec();
                if (form.failure()) {
                    throw *form.failure();
                }
                return;
            }

            // The BMP road writes a BMP whatever the name says.
            savePicture(picture, s.outputFileName, "BMP");
            m_ui.messageBox("File  " + s.outputFileName + "  created.", "Lumiquilt",
                            MessageIcon::information);
            return;
        }
    } catch (const RuntimeError& error) {
        showGeneralMessage(error.number(), error.description(), stage, "SaveAsSub");
    }
}

void FormMontage::mnucopy_Click() {
    if (montageOnView("copy")) {
        copyToClipboard(m_montageWindow);
    }
}

void FormMontage::copyToClipboard(const PictureWindow* source) {
    m_ui.setClipboardImage(source->PictureFile->picture());
}

void FormMontage::mnuEditor_Click() {
    if (montageOnView("edit")) {
        openInEditor(m_montageWindow);
    }
}

void FormMontage::openInEditor(const PictureWindow* source) {
    // Every step that fails is passed over; the editor gets what could be made.
    const QImage picture = source->PictureFile->picture();
    try {
        m_state.outputFileName = temporaryPictureName(privateTemporaryFolder(), randomUnit);
    } catch (const RuntimeError&) {
        return;
    }
    const std::string name = m_state.outputFileName;
    removeFile(name);
    try {
        savePicture(picture, name, "BMP");
    } catch (const RuntimeError&) {
    }
    QCoreApplication::processEvents();
    m_ui.openWithDesktop(name);
    QCoreApplication::processEvents();
    waitForOutsideProgram();
    removeFile(name);
}

}  // namespace lumiquilt
