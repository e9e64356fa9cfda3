#include "output/form_gif.h"

#include <QApplication>
#include <QPainter>
#include <QTimer>
#include <QVBoxLayout>

#include "output/gif_encoder.h"
#include "series/picture_io.h"

namespace lumiquilt {

void ProgressStrip::setPercent(int percent) {
    m_percent = percent;
    update();
}

void ProgressStrip::paintEvent(QPaintEvent* /*event*/) {
    QPainter p(this);
    p.fillRect(rect(), palette().window());
    p.fillRect(0, 0, m_percent * width() / 100, height(), QColor(0, 0, 255));
}

FormGIF::FormGIF(QWidget* owner, ModalUi& ui, const QImage& picture, std::string fileName)
    : QDialog(owner), m_ui(ui), m_picture(picture), m_fileName(std::move(fileName)) {
    setWindowTitle("GIF");
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    Check1 = new QCheckBox("Save transparent", this);
    Command1 = new QPushButton("Save", this);
    Picture2 = new ProgressStrip(this);
    Picture2->setMinimumSize(240, 16);
    layout->addWidget(Picture2);
    layout->addWidget(Check1);
    layout->addWidget(Command1);
    connect(Command1, &QPushButton::clicked, this, &FormGIF::Command1_Click);
}

void FormGIF::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!m_started) {
        m_started = true;
        // The save starts once the window is on screen.
        QTimer::singleShot(0, this, &FormGIF::saveAndClose);
    }
}

void FormGIF::saveAndClose() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    Command1_Click();
    QApplication::restoreOverrideCursor();
    if (!m_failure) {
        m_ui.messageBox("256 color (half color palette)  '" + m_fileName + "'  GIF file created.",
                        "Lumiquilt", MessageIcon::information);
    }
    accept();
}

void FormGIF::Command1_Click() {
    GIF gif;
    gif.Progress = [this](int percent) {
        Picture2->setPercent(percent);
        QCoreApplication::processEvents();
    };
    // The top left pixel's colour is the one made transparent when asked.
    const QRgb corner = m_picture.pixel(0, 0);
    const uint32_t colour =
        static_cast<uint32_t>(qRed(corner) | (qGreen(corner) << 8) | (qBlue(corner) << 16));
    try {
        gif.SaveGIF(mapToHalftone(viewOf(m_picture)), m_fileName, Check1->isChecked(), colour);
    } catch (const RuntimeError& error) {
        m_failure = error;
    }
}

}  // namespace lumiquilt
