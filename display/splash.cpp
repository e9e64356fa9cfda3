#include "display/splash.h"

#include <QApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QRandomGenerator>
#include <QRegion>
#include <QScreen>
#include <QTime>
#include <cmath>

#include "core/numbers.h"
#include "display/artwork.h"

namespace lumiquilt {

namespace {

// The program's pi, short as it is: the border's quarter circles and the ring's
// arcs stop a little before a full quarter or turn.
constexpr float kPi = 3.141f;
// The corner ellipses of the window's shape, in pixels.
constexpr int kCornerEllipse = 100;
constexpr int kTickMilliseconds = 100;
constexpr float kShowSeconds = 4;
// The ring, in pixels (the window was laid out in twips at 15 to the pixel).
constexpr double kRingX = 5700.0 / 15;
constexpr double kRingY = 596.0 / 15;
constexpr double kRingRadius = 380.0 / 15;
constexpr int kRingWidth = 5;
constexpr int kArcs = 31;

// Qt draws arcs in sixteenths of a degree; the program's angles are radians
// counter-clockwise from three o'clock, as Qt's are.
int sixteenths(double radians) {
    return static_cast<int>(std::lround(radians * 180.0 / M_PI * 16.0));
}

int rnd(double scale) {
    return static_cast<int>(roundHalfEven(QRandomGenerator::global()->generateDouble() * scale));
}

}  // namespace

float secondsSinceMidnight() {
    return static_cast<float>(QTime::currentTime().msecsSinceStartOfDay()) / 1000.0f;
}

Splash::Splash(ModalUi& ui, std::function<float()> clock, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_ui(ui), m_clock(std::move(clock)) {
    setWindowTitle("Lumiquilt");
    bitsPerPixel = [this] {
        const QScreen* s = screen();
        return s != nullptr ? s->depth() : 24;
    };
    m_canvas = splashPicture();
    Picture1 = new PictureBox(this);
    Picture1->setAutoSize(true);
    Picture1->move(0, 0);
    Picture1->installEventFilter(this);

    Timer1 = new QTimer(this);
    Timer1->setInterval(kTickMilliseconds);
    connect(Timer1, &QTimer::timeout, this, &Splash::Timer1_Timer);
    Timer1->start();

    setFixedSize(m_canvas.size());
    m_startTime = m_clock();

    QPainterPath shape;
    shape.addRoundedRect(QRectF(0, 0, width(), height()), kCornerEllipse / 2.0,
                         kCornerEllipse / 2.0);
    setMask(QRegion(shape.toFillPolygon().toPolygon()));
    drawBorder();
    Picture1->setPicture(m_canvas);

    if (const QScreen* s = QGuiApplication::primaryScreen()) {
        move(s->availableGeometry().center() - rect().center());
    }
}

void Splash::drawBorder() {
    QPainter p(&m_canvas);
    p.setPen(QPen(QColor(0, 0, 255), 1));
    // The box stops two pixels short of the right and bottom edges.
    const int w = m_canvas.width() - 2;
    const int h = m_canvas.height() - 2;
    const int r = kCornerEllipse / 2;
    p.drawRect(0, 0, w, h);
    p.setRenderHint(QPainter::Antialiasing);
    struct Quarter {
        int cx, cy;
        float from, to;
    };
    const Quarter quarters[] = {
        {r, r, 0.5f * kPi, kPi},
        {r, h - r, kPi, 1.5f * kPi},
        {w - r, r, 0, 0.5f * kPi},
        {w - r, h - r, 1.5f * kPi, 2 * kPi},
    };
    for (const Quarter& q : quarters) {
        p.drawArc(QRect(q.cx - r, q.cy - r, 2 * r, 2 * r), sixteenths(q.from),
                  sixteenths(q.to - q.from));
    }
}

void Splash::Timer1_Timer() {
    if (m_unloaded) {
        return;
    }
    const QRectF ring(kRingX - kRingRadius, kRingY - kRingRadius, 2 * kRingRadius, 2 * kRingRadius);
    for (int i = 0; i < kArcs && !m_unloaded; ++i) {
        const double a = (2 * kPi - 0.2f) - 0.2 * i;
        {
            QPainter p(&m_canvas);
            p.setRenderHint(QPainter::Antialiasing);
            p.setPen(
                QPen(QColor(rnd(255), rnd(200), rnd(200)), kRingWidth, Qt::SolidLine, Qt::FlatCap));
            p.drawArc(ring, sixteenths(a), sixteenths(0.1));
        }
        Picture1->setPicture(m_canvas);
        QCoreApplication::processEvents();
    }
    const float now = m_clock();
    // Below one second means midnight has passed and the clock began again; a
    // clock behind the start says the same when a tick came late past midnight.
    if (now - m_startTime > kShowSeconds || now < 1 || now < m_startTime) {
        m_unloaded = true;
        Timer1->stop();
        accept();
    }
}

void Splash::endEarly() {
    m_startTime = m_clock() - 5;
}

void Splash::keyPressEvent(QKeyEvent* /*event*/) {
    // Every key, Escape included, only ends the wait: the next tick closes.
    endEarly();
}

bool Splash::eventFilter(QObject* watched, QEvent* event) {
    if (watched == Picture1 && event->type() == QEvent::MouseButtonPress) {
        endEarly();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void Splash::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!m_activated) {
        m_activated = true;
        QTimer::singleShot(0, this, &Splash::activateEvent);
    }
}

void Splash::activateEvent() {
    QCoreApplication::processEvents();
    repaint();
    if (bitsPerPixel() < 8) {
        m_ui.messageBox(
            "This software works best with 256 colours or more in your screen colour palette.",
            "but you can still use it with 16 colours", MessageIcon::information);
    }
    QCoreApplication::processEvents();
}

void showSplash(ModalUi& ui) {
    const QString platform = QGuiApplication::platformName();
    if (platform == "offscreen" || platform == "minimal") {
        return;
    }
    Splash splash(ui);
    splash.exec();
}

}  // namespace lumiquilt
