// The preview window, the progress of a run in it, and the Show Preview commands.
#include "engine/form_preview.h"

#include <QCloseEvent>

#include "core/form_montage.h"
#include "core/runtime_error.h"
#include "engine/montage_run.h"
#include "series/picture_io.h"

namespace lumiquilt {

namespace {

constexpr int kClientTwips = 2610;
constexpr int kFrameTwips = 2400;
constexpr int kFrameLeftTwips = 120;

}  // namespace

int FormPreview::frameSize(int16_t twipsPerPixel) {
    const int pixels = kFrameTwips / std::max<int>(1, twipsPerPixel);
    // A width of whole four-pixel groups makes the buffer's rows the frame's rows.
    return std::max(4, pixels / 4 * 4);
}

FormPreview::FormPreview(QWidget* owner, int16_t twipsPerPixel) : QWidget(owner, Qt::Window) {
    setWindowTitle("Preview");
    const int tpp = std::max<int>(1, twipsPerPixel);
    const int frame = frameSize(twipsPerPixel);
    const int margin = kFrameLeftTwips / tpp;
    const int client = std::max(kClientTwips / tpp, frame + margin);
    resize(client, client);
    PicturePreview = new PictureBox(this);
    PicturePreview->setGeometry(margin, margin, frame, frame);
    PicturePreview->setToolTip("Preview of the final picture");
    Cls();
}

void FormPreview::Cls() {
    QImage blank(PicturePreview->size(), QImage::Format_RGB888);
    blank.fill(palette().color(QPalette::Window));
    PicturePreview->setPicture(std::move(blank));
}

void FormPreview::paintPreview(const PixelBuffers& buffers) {
    PicturePreview->setPicture(
        lumiquilt::paintPreview(buffers, PicturePreview->width(), PicturePreview->height()));
}

void FormPreview::unload() {
    const bool wasShown = isVisible();
    hide();
    Cls();
    if (wasShown) {
        emit unloaded();
    }
}

void FormPreview::closeEvent(QCloseEvent* event) {
    event->ignore();
    unload();
}

void FormPreview::startProgress(ProgramState& state, const std::function<void()>& yield) {
    Cls();
    show();
    yield();
    loadPreviewBuffer(state, viewOf(PicturePreview->picture()));
    m_progress.start();
}

bool FormPreview::progressRow(ProgramState& state, int16_t y0) {
    if (!m_progress.row(state.buffers, y0)) {
        return false;
    }
    paintPreview(state.buffers);
    return true;
}

FormPreview* PreviewCommands::showCleared() {
    FormPreview* preview = f.previewWindow();
    preview->Cls();
    preview->show();
    f.yieldEvents();
    return preview;
}

void PreviewCommands::drawReduced(FormPreview* preview, int picture) {
    ProgramState& s = f.state();
    loadPreviewBuffer(s, viewOf(preview->PicturePreview->picture()));
    reducePicture(s.buffers, picture, [&](int) { preview->paintPreview(s.buffers); });
    f.yieldEvents();
    preview->raise();
    f.updateWindowMenu();
}

namespace {

// Mode 0: the main montage window into slot 100, the series from its windows.
void loadEverything(FormMontage& f) {
    ProgramState& s = f.state();
    std::vector<PictureView> images;
    for (int k = 1; k <= s.imageCount; ++k) {
        images.push_back(f.pictureWindow(k)->PictureFile->view());
    }
    loadPixelBuffers(s, viewOf(f.montageWindow()->PictureFile->picture()),
                     static_cast<int>(s.imageWidth), static_cast<int>(s.imageHeight), images,
                     [&f](const std::string& text) {
                         f.ui().messageBox(text, kDimensionTitle, MessageIcon::critical);
                     });
}

// The commands have no handler of their own; a failure of the buffers is told in the
// program's general words rather than lost.
template <typename Body>
void guarded(FormMontage& f, const char* routine, Body body) {
    if (f.runInProgress()) {
        return;  // a run owns the buffers until it ends
    }
    try {
        body();
    } catch (const RuntimeError& error) {
        f.ui().messageBox(generalMessage(error.number(), error.description(), 0, routine),
                          std::string(kGeneralMessageTitle), MessageIcon::critical);
    } catch (const ProcessEnding&) {
    }
}

}  // namespace

void PreviewCommands::mnuShowPreview_Click(const FormPicture* window) {
    guarded(f, "mnuShowPreview", [&] {
        int image = 0;
        for (int k = 1; k < kImageSlots; ++k) {
            if (f.hasPictureWindow(k) && f.pictureWindow(k)->Caption() == window->Caption()) {
                image = k;
                break;
            }
        }
        if (image == 0) {
            return;  // no picture of the series has this caption
        }
        FormPreview* preview = showCleared();
        loadEverything(f);
        drawReduced(preview, image);
    });
}

void PreviewCommands::mnuShowPreview2_Click(const FormMontagePicture* window) {
    guarded(f, "mnuShowPreview2", [&] {
        int slot = PixelBuffers::kFirstMontageSlot;
        bool methodWindow = false;
        for (int i = 0; i < 8; ++i) {
            if (f.hasMethodUsedWindow(i) && f.methodUsedWindow(i)->Caption() == window->Caption()) {
                slot = PixelBuffers::kFirstMontageSlot + i;
                methodWindow = true;
                break;
            }
        }
        if (methodWindow) {
            // Mode 1: the seven method windows into their slots, in place. The main
            // montage window may still show slot 100; it keeps a copy of its own.
            f.montageWindow()->PictureFile->ownPicture();
            std::vector<PictureView> methods;
            for (int i = 0; i < kMethodCount; ++i) {
                methods.push_back(f.hasMethodWindow(i)
                                      ? viewOf(f.methodWindow(i)->PictureFile->picture())
                                      : PictureView{});
            }
            loadMethodPixelBuffers(f.state(), methods);
        } else {
            loadEverything(f);
        }
        drawReduced(showCleared(), slot);
    });
}

void PreviewCommands::connectPictureCommands(FormMontage& form, FormPicture* window) {
    QObject::connect(window->mnuShowPreview, &QAction::triggered, &form,
                     [&form, window] { PreviewCommands(form).mnuShowPreview_Click(window); });
}

void PreviewCommands::connectMontageCommands(FormMontage& form, FormMontagePicture* window) {
    QObject::connect(window->mnuShowPreview2, &QAction::triggered, &form,
                     [&form, window] { PreviewCommands(form).mnuShowPreview2_Click(window); });
}

}  // namespace lumiquilt
