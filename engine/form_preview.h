#pragma once

#include <QWidget>

#include "core/program_state.h"
#include "display/form_picture.h"
#include "engine/preview.h"

namespace lumiquilt {

class FormMontage;
class FormMontagePicture;
class FormPicture;

/// The small window with a reduced copy of a picture: it grows row by row while a
/// montage is built, and shows any source or montage on request. Its frame is square
/// whatever the picture's shape.
class FormPreview : public QWidget {
    Q_OBJECT
  public:
    FormPreview(QWidget* owner, int16_t twipsPerPixel);

    /// The frame, `PicturePreview`'s picture, in pixels: 2400 twips, a multiple of four.
    static int frameSize(int16_t twipsPerPixel);

    PictureBox* PicturePreview = nullptr;

    /// Clears the frame to the window's back colour.
    void Cls();
    /// Puts previewPixels into the frame.
    void paintPreview(const PixelBuffers& buffers);
    /// Hidden and cleared; its Window menu entry goes.
    void unload();

    /// The progress of a run: cleared, shown, and its buffer read from the frame.
    /// `yield` lets the window queue run once.
    void startProgress(ProgramState& state, const std::function<void()>& yield);
    /// After a row of blocks: true when a preview row was drawn and painted.
    bool progressRow(ProgramState& state, int16_t y0);

  signals:
    void unloaded();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    PreviewProgress m_progress;
};

/// The two "Show Preview of this Picture" commands of the picture windows' popups.
class PreviewCommands {
  public:
    explicit PreviewCommands(FormMontage& form) : f(form) {}

    /// A source picture's window: image k of the series, k found by the caption.
    void mnuShowPreview_Click(const FormPicture* window);
    /// A montage window: a method window's slot, found by the caption among the
    /// method used-windows, or else the main montage in slot 100.
    void mnuShowPreview2_Click(const FormMontagePicture* window);

    /// The popup entries of a new picture or montage window.
    static void connectPictureCommands(FormMontage& form, FormPicture* window);
    static void connectMontageCommands(FormMontage& form, FormMontagePicture* window);

  private:
    /// Shows FormPreview cleared, with the window queue run once.
    FormPreview* showCleared();
    /// Reads the frame in, draws the reduced copy of `picture` row by row, and
    /// brings the window forward.
    void drawReduced(FormPreview* preview, int picture);

    FormMontage& f;
};

}  // namespace lumiquilt
