#pragma once

#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QWidget>
#include <array>

namespace lumiquilt {

/// The picture control `PictureFile`: shows its picture one to one from the top
/// left corner, the window's back colour around it, and no scroll bars.
class PictureBox : public QWidget {
    Q_OBJECT
  public:
    explicit PictureBox(QWidget* parent);

    /// Holds the picture; with autoSize the control takes the picture's size.
    void setPicture(QImage picture);
    /// Removes the picture: the control then reads as blank (black) samples.
    void clearPicture();
    const QImage& picture() const { return m_picture; }
    bool hasPicture() const { return !m_picture.isNull(); }

    void setAutoSize(bool on) { m_autoSize = on; }

    /// The target mark: two circles, outer and inner, in picture pixels.
    std::array<QRect, 2> Shape1{QRect(0, 0, 26, 26), QRect(8, 8, 10, 10)};
    bool marksVisible() const { return m_marksVisible; }
    void setMarksVisible(bool visible);
    void setMarkColor(QColor color);

  signals:
    /// A right-button release anywhere on the picture.
    void rightButtonReleased();

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

  private:
    QImage m_picture;
    bool m_autoSize = false;
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
};

}  // namespace lumiquilt
