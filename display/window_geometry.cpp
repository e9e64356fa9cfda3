#include "display/window_geometry.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <cmath>

#include "core/program_state.h"

namespace lumiquilt {

ScreenMetrics readScreenMetrics() {
    ScreenMetrics m;
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const double dpi = screen->logicalDotsPerInchX();
        if (dpi > 0) {
            m.twipsPerPixel = static_cast<int16_t>(std::lround(1440.0 / dpi));
        }
    }
    if (QApplication::style() != nullptr) {
        m.captionHeight = static_cast<int16_t>(
            std::max(18, QApplication::style()->pixelMetric(QStyle::PM_TitleBarHeight)));
    }
    m.menuHeight = static_cast<int16_t>(QFontMetrics(QApplication::font()).height() + 6);
    return m;
}

void applyScreenMetrics(ProgramState& state, const ScreenMetrics& metrics) {
    state.captionHeight = metrics.captionHeight;
    state.dialogFrameHeight = metrics.dialogFrameHeight;
    state.sizingFrameHeight = metrics.sizingFrameHeight;
    state.menuHeight = metrics.menuHeight;
    state.twipsPerPixel = metrics.twipsPerPixel;
}

WindowPlacement placementFromTwips(const ProgramState& state, double left, double top, double width,
                                   double height) {
    const double tpp = std::max<int>(1, state.twipsPerPixel);
    WindowPlacement p;
    p.x = static_cast<int>(std::lround(left / tpp));
    p.y = static_cast<int>(std::lround(top / tpp));
    p.clientWidth =
        std::max(1, static_cast<int>(std::lround(width / tpp)) - 2 * state.sizingFrameHeight);
    p.clientHeight = std::max(1, static_cast<int>(std::lround(height / tpp)) - state.captionHeight -
                                     2 * state.dialogFrameHeight);
    return p;
}

void moveWindowTwips(QWidget* window, const ProgramState& state, double left, double top,
                     double width, double height) {
    const WindowPlacement p = placementFromTwips(state, left, top, width, height);
    window->move(p.x, p.y);
    window->resize(p.clientWidth, p.clientHeight);
}

double windowWidthTwips(const QWidget* window, const ProgramState& state) {
    return static_cast<double>(window->width() + 2 * state.sizingFrameHeight) * state.twipsPerPixel;
}

double windowHeightTwips(const QWidget* window, const ProgramState& state) {
    return static_cast<double>(window->height() + state.captionHeight +
                               2 * state.dialogFrameHeight) *
           state.twipsPerPixel;
}

double displayScale(double pictureWidth, double pictureHeight, const PictureRoom& room) {
    double scale = 1.0;
    if (pictureWidth > 0 && room.width > 0) {
        scale = std::min(scale, room.width / pictureWidth);
    }
    if (pictureHeight > 0 && room.height > 0) {
        scale = std::min(scale, room.height / pictureHeight);
    }
    return scale;
}

namespace {

// The available area less a picture window's frame and title.
PictureRoom roomIn(double availableWidth, double availableHeight, const ProgramState& state) {
    return {availableWidth - 2.0 * state.sizingFrameHeight,
            availableHeight - state.captionHeight - 2.0 * state.dialogFrameHeight};
}

}  // namespace

double displayScale(double pictureWidth, double pictureHeight, double availableWidth,
                    double availableHeight, const ProgramState& state) {
    return displayScale(pictureWidth, pictureHeight,
                        roomIn(availableWidth, availableHeight, state));
}

PictureRoom screenPictureRoom(const ProgramState& state) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QRect available =
        screen != nullptr ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
    return roomIn(available.width(), available.height(), state);
}

double screenDisplayScale(const ProgramState& state, double pictureWidth, double pictureHeight) {
    return displayScale(pictureWidth, pictureHeight, screenPictureRoom(state));
}

double screenWidthTwips(const ProgramState& state) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return (screen != nullptr ? screen->geometry().width() : 1024) *
           static_cast<double>(state.twipsPerPixel);
}

double screenHeightTwips(const ProgramState& state) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return (screen != nullptr ? screen->geometry().height() : 768) *
           static_cast<double>(state.twipsPerPixel);
}

}  // namespace lumiquilt
