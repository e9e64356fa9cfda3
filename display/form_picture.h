#pragma once

#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QWidget>
#include <array>

#include "series/picture_io.h"
#include "series/pixel_buffers.h"

namespace lumiquilt {

/// The picture control `PictureFile`: shows its picture from the top left corner,
/// the window's back colour around it, and no scroll bars. A picture larger than the
/// screen is shown reduced by the display scale; everything else about it (the
/// marks, the mouse) stays in picture pixels.
class PictureBox : public QWidget {
    Q_OBJECT
  public:
    explicit PictureBox(QWidget* parent);

    /// Holds the picture; with autoSize the control takes the picture's shown size.
    /// A shown picture of that size, scaled ahead, saves scaling it here.
    void setPicture(QImage picture, QImage shown = QImage());
    /// How a picture that stands in a frame is copied out of it when asked for.
    using FrameCopy = QImage (*)(const PictureView& framed);
    /// Holds a picture that stands in a frame of the buffers: no copy of it is made
    /// until picture() is asked for, and then the copy takes the frame's place.
    void setFramedPicture(FramedPicture framed, QImage shown = QImage(),
                          FrameCopy copy = opaquePictureOf);
    /// The size a picture of `picture`'s size is shown at, at a display scale.
    static QSize shownSizeAt(QSize picture, double scale);
    /// Copies a picture that stands in a frame out of it, for a frame about to be
    /// rewritten in place. Throws RuntimeError 7 when there is no room for the copy.
    void ownPicture();
    /// Removes the picture: the control then reads as blank (black) samples.
    void clearPicture();
    const QImage& picture() const;
    /// The picture's samples, without a copy.
    PictureView view() const;
    QSize pictureSize() const;
    bool hasPicture() const { return !m_picture.isNull() || m_framed.view.bits != nullptr; }

    void setAutoSize(bool on) { m_autoSize = on; }

    /// Screen pixels per picture pixel, at most 1.
    void setDisplayScale(double scale);
    double displayScale() const { return m_scale; }

    /// The target mark `Shape1`: member 0 the outer circle, 1 the inner one, in
    /// picture pixels. They may stand anywhere, off the picture too.
    const QRect& Shape1(int member) const { return m_shapes.at(static_cast<size_t>(member)); }
    void moveShape(int member, int left, int top);
    /// Both circles back at their design place.
    void resetMarks();
    bool marksVisible() const { return m_marksVisible; }
    void setMarksVisible(bool visible);
    void setMarkColor(QColor color);
    QColor markColor() const { return m_markColor; }

    /// Mouse buttons as the handlers count them: left 1, right 2, middle 4.
    enum Button { left = 1, right = 2, middle = 4 };

  signals:
    /// Mouse events with the button (for a move: the buttons held), the shift keys
    /// (shift 1, control 2, alt 4) and the place in picture pixels.
    void mouseDown(int button, int shift, float x, float y);
    void mouseMove(int buttons, int shift, float x, float y);
    void mouseUp(int button, int shift, float x, float y);
    /// A right-button release anywhere on the picture, after mouseUp.
    void rightButtonReleased();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QSize shownSize() const;
    void fitToPicture(QImage shown = QImage());
    void updateOpaque();

    mutable FramedPicture m_framed;
    FrameCopy m_frameCopy = opaquePictureOf;
    mutable QImage m_picture;  // made from m_framed when first asked for
    QImage m_shown;            // the picture at the display scale, when that is below 1
    double m_scale = 1.0;
    bool m_autoSize = false;
    std::array<QRect, 2> m_shapes;
    bool m_marksVisible = false;
    QColor m_markColor = Qt::black;
};

/// Common ground of the windows that show one picture: the picture control, the
/// popup menu `mnuMenu` (opened at (100, 100) by a right-button release) and the
/// unload that "Close Window" and the close box both lead to.
class PictureWindow : public QWidget {
    Q_OBJECT
  public:
    PictureWindow(QWidget* owner, const QString& designTitle);

    PictureBox* PictureFile = nullptr;
    QMenu* mnuMenu = nullptr;
    QAction* mnuClose = nullptr;

    QString Caption() const { return windowTitle(); }

    /// Back to the design state, hidden, picture gone; the slot can be filled anew.
    void unload();
    /// While a run uses the pictures, closing the window is refused.
    void setCloseAllowed(bool allowed);

    /// Adds a popup entry, or a separator for "-".
    QAction* addPopupEntry(const QString& caption);

  signals:
    void unloaded(PictureWindow* window, const QString& caption);

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    QString m_designTitle;
    bool m_closeAllowed = true;
};

/// A window of one source picture of the series.
class FormPicture : public PictureWindow {
    Q_OBJECT
  public:
    explicit FormPicture(QWidget* owner);

    QAction* mnuSaveAs = nullptr;
    QAction* mnucopy = nullptr;
    QAction* mnuEditor = nullptr;
    QAction* mnuPrint100 = nullptr;
    QAction* mnuPrint = nullptr;
    QAction* mnuPrintHalf = nullptr;
    QAction* mnuOffsetColor = nullptr;
    QAction* mnuShowPreview = nullptr;
};

/// A window of a montage: the main one, or one of a comparison's method windows.
class FormMontagePicture : public PictureWindow {
    Q_OBJECT
  public:
    explicit FormMontagePicture(QWidget* owner);

    QAction* mnuSaveProject = nullptr;
    QAction* mnuSaveAs = nullptr;
    QAction* mnucopy = nullptr;
    QAction* mnuEditor = nullptr;
    QAction* mnuPrint100 = nullptr;
    QAction* mnuPrint = nullptr;
    QAction* mnuPrintHalf = nullptr;
    QAction* mnuSmooth = nullptr;
    QAction* mnuShowPreview2 = nullptr;
};

/// The red panel that names the dominant image of each block.
class FormUsed : public QWidget {
    Q_OBJECT
  public:
    explicit FormUsed(QWidget* owner);

    QLabel* LabelUsed = nullptr;

    QString Caption() const { return windowTitle(); }
    void unload();
};

/// The thin strip that lists where the target marks stand.
class FormStatus : public QWidget {
    Q_OBJECT
  public:
    explicit FormStatus(QWidget* owner);

    QLabel* LabelStatus = nullptr;

    /// Hidden, with the label's design text.
    void unload();
};

}  // namespace lumiquilt
