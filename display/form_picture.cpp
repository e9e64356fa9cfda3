#include "display/form_picture.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>

namespace lumiquilt {

namespace {

constexpr QPoint kPopupPlace{100, 100};

}  // namespace

PictureBox::PictureBox(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

void PictureBox::setPicture(QImage picture) {
    m_picture = std::move(picture);
    if (m_autoSize && !m_picture.isNull()) {
        resize(m_picture.size());
    }
    update();
}

void PictureBox::clearPicture() {
    m_picture = QImage();
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

void PictureBox::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (!m_picture.isNull()) {
        painter.drawImage(QPoint(0, 0), m_picture);
    }
    if (m_marksVisible) {
        painter.setPen(QPen(m_markColor, 1));
        painter.setBrush(Qt::NoBrush);
        for (const QRect& circle : Shape1) {
            painter.drawEllipse(circle.adjusted(0, 0, -1, -1));
        }
    }
}

void PictureBox::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton) {
        emit rightButtonReleased();
    }
    QWidget::mouseReleaseEvent(event);
}

PictureWindow::PictureWindow(QWidget* owner, const QString& designTitle)
    : QWidget(owner, Qt::Window), m_designTitle(designTitle) {
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

FormUsed::FormUsed(QWidget* owner) : QWidget(owner, Qt::Window) {
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

FormStatus::FormStatus(QWidget* owner) : QWidget(owner, Qt::Window | Qt::FramelessWindowHint) {
    setAutoFillBackground(true);
    LabelStatus = new QLabel("Image 1 = ", this);
    QFont font("Times New Roman");
    font.setPointSize(9);
    LabelStatus->setFont(font);
    LabelStatus->move(0, 0);
}

void FormUsed::unload() {
    hide();
    LabelUsed->clear();
    // A comparison's copy is found by its caption; an unloaded one must not be.
    setWindowTitle(" Dominant image used for the Montage");
}

}  // namespace lumiquilt
