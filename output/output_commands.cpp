// Save As, the clipboard and the outside editor.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <random>

#include "output/output_commands.h"

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

void OutputCommands::connectPictureCommands(FormPicture* w) {
    QObject::connect(w->mnuSaveAs, &QAction::triggered, &f, [this, w] { SaveAsSub(w, " copy"); });
    QObject::connect(w->mnucopy, &QAction::triggered, &f, [this, w] { copyToClipboard(w); });
    QObject::connect(w->mnuEditor, &QAction::triggered, &f, [this, w] { openInEditor(w); });
    QObject::connect(w->mnuPrint100, &QAction::triggered, &f,
                     [this, w] { printPicture(w, PrintSize::natural, w); });
    QObject::connect(w->mnuPrint, &QAction::triggered, &f,
                     [this, w] { printPicture(w, PrintSize::fitToPage, w); });
    QObject::connect(w->mnuPrintHalf, &QAction::triggered, &f,
                     [this, w] { printPicture(w, PrintSize::halfPage, w); });
}

void OutputCommands::connectMontageCommands(FormMontagePicture* w) {
    // Copy and print take the main montage, also from a method window; Save As and
    // the editor take the window's own picture.
    QObject::connect(w->mnuSaveAs, &QAction::triggered, &f,
                     [this, w] { SaveAsSub(w, " montage"); });
    QObject::connect(w->mnucopy, &QAction::triggered, &f,
                     [this] { copyToClipboard(f.montageWindow()); });
    QObject::connect(w->mnuEditor, &QAction::triggered, &f, [this, w] { openInEditor(w); });
    QObject::connect(w->mnuPrint100, &QAction::triggered, &f,
                     [this] { printPicture(f.montageWindow(), PrintSize::natural); });
    QObject::connect(w->mnuPrint, &QAction::triggered, &f,
                     [this] { printPicture(f.montageWindow(), PrintSize::fitToPage); });
    QObject::connect(w->mnuPrintHalf, &QAction::triggered, &f,
                     [this] { printPicture(f.montageWindow(), PrintSize::halfPage); });
    QObject::connect(w->mnuSmooth, &QAction::triggered, &f, [this, w] {
        // A method window is found by its caption, and the seven method pictures are
        // read into their slots before the step.
        if (w == f.montageWindow() || w->Caption() == f.montageWindow()->Caption()) {
            smoothMontage(f.state().buffers, 999, kTrue);
            return;
        }
        for (int i = 0; i < 8; ++i) {
            if (!f.hasMethodWindow(i) || f.methodWindow(i)->Caption() != w->Caption()) {
                continue;
            }
            std::vector<PictureView> views;
            for (int slot = 0; slot < 7; ++slot) {
                views.push_back(viewOf(f.methodWindow(slot)->PictureFile->picture()));
            }
            loadMethodPixelBuffers(f.state(), views);
            smoothMontage(f.state().buffers, i, kTrue);
            return;
        }
    });
}

void OutputCommands::waitForOutsideProgram() {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < static_cast<qint64>(outsideProgramWait * 1000)) {
        QCoreApplication::processEvents();
        QThread::msleep(10);
    }
}

bool OutputCommands::montageOnView(const char* verb) {
    if (f.montageWindow()->isVisible()) {
        return true;
    }
    f.ui().messageBox(std::string("You have not got a Montage image to ") + verb + ".",
                      "Make one, then try again", MessageIcon::critical);
    return false;
}

void OutputCommands::mnuJPG_Click() {
    if (montageOnView("save")) {
        SaveAsSub(f.montageWindow(), " montage");
    }
}

void OutputCommands::SaveAsSub(PictureWindow* window, const std::string& suffix) {
    ProgramState& s = f.state();
    int stage = 8000;
    try {
        FileDialogRequest request;
        request.filter = "*.bmp|*.bmp|*.jpg|*.jpg|*.gif|*.gif|";
        request.fileName = proposedSaveName(window->Caption().toStdString(), suffix);
        request.initialFolder = s.appPath;
        const QImage picture = window->PictureFile->picture();
        for (;;) {
            stage = 8300;
            const std::optional<std::string> chosen = f.ui().saveFileName(request);
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
                    f.ui().startProgram(
                        s.appPath + "CSTjpeg",
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
                if (f.ui().messageBox(
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
                    if (f.ui().messageBox(
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
                FormGIF form(window, f.ui(), picture, s.outputFileName);
                form.exec();
                if (form.failure()) {
                    throw *form.failure();
                }
                return;
            }

            // The BMP road writes a BMP whatever the name says.
            savePicture(picture, s.outputFileName, "BMP");
            f.ui().messageBox("File  " + s.outputFileName + "  created.", "Lumiquilt",
                              MessageIcon::information);
            return;
        }
    } catch (const RuntimeError& error) {
        f.ui().messageBox(generalMessage(error, stage, "SaveAsSub"),
                          std::string(kGeneralMessageTitle), MessageIcon::critical);
    }
}

void OutputCommands::mnucopy_Click() {
    if (montageOnView("copy")) {
        copyToClipboard(f.montageWindow());
    }
}

void OutputCommands::copyToClipboard(const PictureWindow* source) {
    f.ui().setClipboardImage(source->PictureFile->picture());
}

void OutputCommands::mnuEditor_Click() {
    if (montageOnView("edit")) {
        openInEditor(f.montageWindow());
    }
}

void OutputCommands::openInEditor(const PictureWindow* source) {
    // Every step that fails is passed over; the editor gets what could be made.
    const QImage picture = source->PictureFile->picture();
    try {
        f.state().outputFileName = temporaryPictureName(privateTemporaryFolder(), randomUnit);
    } catch (const RuntimeError&) {
        return;
    }
    const std::string name = f.state().outputFileName;
    removeFile(name);
    try {
        savePicture(picture, name, "BMP");
    } catch (const RuntimeError&) {
    }
    QCoreApplication::processEvents();
    f.ui().openWithDesktop(name);
    QCoreApplication::processEvents();
    waitForOutsideProgram();
    removeFile(name);
}

}  // namespace lumiquilt
