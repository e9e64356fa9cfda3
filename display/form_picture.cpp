#include "display/form_picture.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <new>

#include "core/runtime_error.h"
#include "series/image_offsets.h"
#include "series/picture_io.h"

namespace lumiquilt {

namespace {

constexpr QPoint kPopupPlace{100, 100};
constexpr const char* kStatusDesignText = "Image 1 = ";

// A window owned by the main window: it stays above it and goes with it. Window
// systems keep only dialog-like windows with their owner (on X11 a plain window
// gets no transient hint), so the picture windows are dialogs with a full frame.
constexpr Qt::WindowFlags kOwnedWindow = Qt::Dialog | Qt::WindowTitleHint |
                                         Qt::WindowSystemMenuHint | Qt::WindowMinMaxButtonsHint |
                                         Qt::WindowCloseButtonHint;

int buttonsOf(Qt::MouseButtons buttons) {
    return (buttons & Qt::LeftButton ? PictureBox::left : 0) |
           (buttons & Qt::RightButton ? PictureBox::right : 0) |
           (buttons & Qt::MiddleButton ? PictureBox::middle : 0);
}

int shiftOf(Qt::KeyboardModifiers modifiers) {
    return (modifiers & Qt::ShiftModifier ? 1 : 0) | (modifiers & Qt::ControlModifier ? 2 : 0) |
           (modifiers & Qt::AltModifier ? 4 : 0);
}

}  // namespace

PictureBox::PictureBox(QWidget* parent) : QWidget(parent) {
    resetMarks();
}

void PictureBox::setPicture(QImage picture, QImage shown) {
    m_framed = FramedPicture{};
    m_picture = std::move(picture);
    fitToPicture(std::move(shown));
}

void PictureBox::setFramedPicture(FramedPicture framed, QImage shown, FrameCopy copy) {
    m_picture = QImage();
    m_framed = std::move(framed);
    m_frameCopy = copy;
    fitToPicture(std::move(shown));
}

void PictureBox::clearPicture() {
    m_framed = FramedPicture{};
    m_picture = QImage();
    m_shown = QImage();
    updateOpaque();
    update();
}

const QImage& PictureBox::picture() const {
    if (m_picture.isNull() && m_framed.view.bits != nullptr) {
        try {
            m_picture = m_frameCopy(m_framed.view);
        } catch (const RuntimeError&) {
            // Without room for the copy it reads as no picture, and is asked again next time.
        } catch (const std::bad_alloc&) {
        }
        if (!m_picture.isNull()) {
            // The frame may be rewritten or given back from here on; the copy holds all.
            m_framed = FramedPicture{};
        }
    }
    return m_picture;
}

void PictureBox::ownPicture() {
    if (m_framed.view.bits != nullptr && picture().isNull()) {
        throw RuntimeError(kOutOfMemory);
    }
}

PictureView PictureBox::view() const {
    return m_framed.view.bits != nullptr ? m_framed.view : viewOf(m_picture);
}

QSize PictureBox::pictureSize() const {
    return m_framed.view.bits != nullptr ? QSize(m_framed.view.width, m_framed.view.height)
                                         : m_picture.size();
}

void PictureBox::setDisplayScale(double scale) {
    scale = std::clamp(scale, 1e-3, 1.0);
    if (scale == m_scale) {
        return;
    }
    m_scale = scale;
    fitToPicture();
}

QSize PictureBox::shownSizeAt(QSize picture, double scale) {
    scale = std::clamp(scale, 1e-3, 1.0);
    if (scale == 1.0) {
        return picture;
    }
    return QSize(std::max(1, static_cast<int>(std::lround(picture.width() * scale))),
                 std::max(1, static_cast<int>(std::lround(picture.height() * scale))));
}

QSize PictureBox::shownSize() const {
    return shownSizeAt(pictureSize(), m_scale);
}

void PictureBox::fitToPicture(QImage shown) {
    m_shown = QImage();
    if (hasPicture() && m_scale < 1.0) {
        // Scaled once here rather than at every paint: a photograph is large.
        if (shown.size() == shownSize()) {
            m_shown = std::move(shown);
        } else if (m_picture.isNull()) {
            m_shown = scaledFrameForDisplay(m_framed.view, shownSize());
        } else {
            m_shown = scaledForDisplay(m_picture, shownSize());
        }
    }
    if (m_autoSize && hasPicture()) {
        resize(shownSize());
    }
    updateOpaque();
    update();
}

// Unless told that the picture covers the control, Qt first fills the window's
// background under it: on a first showing, a fill of every series window for nothing.
void PictureBox::updateOpaque() {
    const auto covers = [this](QSize painted) {
        return painted.width() >= width() && painted.height() >= height();
    };
    bool opaque = false;
    if (m_scale < 1.0) {
        opaque = !m_shown.isNull() && !m_shown.hasAlphaChannel() && covers(m_shown.size());
    } else if (m_picture.isNull()) {
        opaque = m_framed.view.bits != nullptr && covers(pictureSize());
    } else {
        opaque = !m_picture.hasAlphaChannel() && covers(m_picture.size());
    }
    setAttribute(Qt::WA_OpaquePaintEvent, opaque);
}

void PictureBox::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    updateOpaque();
}

void PictureBox::moveShape(int member, int left, int top) {
    m_shapes.at(static_cast<size_t>(member)).moveTo(left, top);
    update();
}

void PictureBox::resetMarks() {
    m_shapes[0] = QRect(0, 0, kMarkOuterSize, kMarkOuterSize);
    m_shapes[1] = QRect(kMarkInnerInset, kMarkInnerInset, kMarkInnerSize, kMarkInnerSize);
    m_marksVisible = false;
    update();
}

void PictureBox::setMarksVisible(bool visible) {
    m_marksVisible = visible;
    update();
}

void PictureBox::setMarkColor(QColor color) {
    m_markColor = color;
    update();
}

void PictureBox::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (m_scale < 1.0) {
        painter.drawImage(QPoint(0, 0), m_shown);
    } else if (m_picture.isNull() && m_framed.view.bits != nullptr) {
        // At full size the part to paint comes straight from the frame: the window
        // keeps no copy of the whole.
        const QRect area = event->rect() & QRect(QPoint(0, 0), pictureSize());
        if (!area.isEmpty()) {
            painter.drawImage(area.topLeft(), opaquePartOf(m_framed.view, area));
        }
    } else {
        painter.drawImage(QPoint(0, 0), m_picture);
    }
    if (m_marksVisible) {
        painter.setPen(QPen(m_markColor, 1));
        painter.setBrush(Qt::NoBrush);
        for (const QRect& circle : m_shapes) {
            if (m_scale == 1.0) {
                painter.drawEllipse(circle.adjusted(0, 0, -1, -1));
            } else {
                painter.setRenderHint(QPainter::Antialiasing);
                painter.drawEllipse(QRectF(circle.x() * m_scale, circle.y() * m_scale,
                                           circle.width() * m_scale, circle.height() * m_scale));
            }
        }
    }
}

void PictureBox::mousePressEvent(QMouseEvent* event) {
    const QPointF p = event->position() / m_scale;
    emit mouseDown(buttonsOf(event->button()), shiftOf(event->modifiers()),
                   static_cast<float>(p.x()), static_cast<float>(p.y()));
}

void PictureBox::mouseMoveEvent(QMouseEvent* event) {
    const QPointF p = event->position() / m_scale;
    emit mouseMove(buttonsOf(event->buttons()), shiftOf(event->modifiers()),
                   static_cast<float>(p.x()), static_cast<float>(p.y()));
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event) {
    const QPointF p = event->position() / m_scale;
    emit mouseUp(buttonsOf(event->button()), shiftOf(event->modifiers()), static_cast<float>(p.x()),
                 static_cast<float>(p.y()));
    if (event->button() == Qt::RightButton) {
        emit rightButtonReleased();
    }
}

PictureWindow::PictureWindow(QWidget* owner, const QString& designTitle)
    : QWidget(owner, kOwnedWindow), m_designTitle(designTitle) {
    setWindowTitle(designTitle);
    PictureFile = new PictureBox(this);
    PictureFile->move(0, 0);
    mnuMenu = new QMenu(tr("Menu"), this);
    connect(PictureFile, &PictureBox::rightButtonReleased, this,
            [this] { mnuMenu->popup(mapToGlobal(kPopupPlace)); });
}

QAction* PictureWindow::addPopupEntry(const QString& caption) {
    if (caption == "-") {
        return mnuMenu->addSeparator();
    }
    return mnuMenu->addAction(caption);
}

void PictureWindow::unload() {
    const QString caption = windowTitle();
    const bool wasShown = isVisible();
    hide();
    PictureFile->clearPicture();
    // A new instance: the marks, hidden, at their design place.
    PictureFile->resetMarks();
    PictureFile->setDisplayScale(1.0);
    setWindowTitle(m_designTitle);
    if (wasShown || caption != m_designTitle) {
        emit unloaded(this, caption);
    }
}

void PictureWindow::setCloseAllowed(bool allowed) {
    m_closeAllowed = allowed;
    mnuClose->setEnabled(allowed);
}

void PictureWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (m_closeAllowed) {
        unload();
    }
}

FormPicture::FormPicture(QWidget* owner) : PictureWindow(owner, "Original Image") {
    PictureFile->setAutoSize(true);
    PictureFile->setToolTip(
        "This is an image I have read from disk.   My file name is in my title bar.");
    mnuSaveAs = addPopupEntry("Save As");
    mnucopy = addPopupEntry("Copy to Clipboard");
    mnuEditor = addPopupEntry("Open in Editor");
    mnuPrint100 = addPopupEntry("Print");
    mnuPrint = addPopupEntry("Print File to Page");
    mnuPrintHalf = addPopupEntry("Print Fit to Half Page");
    addPopupEntry("-");
    mnuOffsetColor = addPopupEntry("Set Offset Target Color");
    mnuShowPreview = addPopupEntry("Show Preview of this Picture");
    mnuClose = addPopupEntry("Close Window");
    connect(mnuClose, &QAction::triggered, this, &PictureWindow::unload);
}

FormMontagePicture::FormMontagePicture(QWidget* owner)
    : PictureWindow(owner, "Montage Clearstack") {
    QPalette p = palette();
    p.setColor(QPalette::Window, QColor(0x40, 0x40, 0x40));
    setPalette(p);
    setAutoFillBackground(true);
    PictureFile->setToolTip(
        "This is a combined In Focus Montage - see the Properties page for details");
    mnuSaveProject = addPopupEntry("Save project");
    addPopupEntry("-");
    mnuSaveAs = addPopupEntry("Save As");
    mnucopy = addPopupEntry("Copy to Clipboard");
    mnuEditor = addPopupEntry("Open in Editor");
    mnuPrint100 = addPopupEntry("Print");
    mnuPrint = addPopupEntry("Print Fit to Page");
    mnuPrintHalf = addPopupEntry("Print Fit to Half Page");
    mnuSmooth = addPopupEntry("Smooth Montage Image");
    mnuSmooth->setVisible(false);
    addPopupEntry("-");
    mnuShowPreview2 = addPopupEntry("Show Preview of this Picture");
    mnuClose = addPopupEntry("Close Window");
    connect(mnuClose, &QAction::triggered, this, &PictureWindow::unload);
}

FormUsed::FormUsed(QWidget* owner) : QWidget(owner, kOwnedWindow) {
    setWindowTitle(" Dominant image used for the Montage");
    QPalette p = palette();
    p.setColor(QPalette::Window, QColor(0xFF, 0x00, 0x00));
    p.setColor(QPalette::WindowText, Qt::white);
    setPalette(p);
    setAutoFillBackground(true);
    QFont font("Times New Roman");
    font.setPointSizeF(9.75);
    font.setBold(true);
    setFont(font);
    LabelUsed = new QLabel(this);
    LabelUsed->move(8, 8);
    LabelUsed->setAlignment(Qt::AlignLeft | Qt::AlignTop);
}

FormStatus::FormStatus(QWidget* owner) : QWidget(owner, Qt::Dialog | Qt::FramelessWindowHint) {
    setAutoFillBackground(true);
    LabelStatus = new QLabel(kStatusDesignText, this);
    QFont font("Times New Roman");
    font.setPointSize(9);
    LabelStatus->setFont(font);
    LabelStatus->move(0, 0);
    LabelStatus->adjustSize();
}

void FormStatus::unload() {
    hide();
    LabelStatus->setText(kStatusDesignText);
    LabelStatus->adjustSize();
}

void FormUsed::unload() {
    hide();
    LabelUsed->clear();
    // A comparison's copy is found by its caption; an unloaded one must not be.
    setWindowTitle(" Dominant image used for the Montage");
}

}  // namespace lumiquilt
