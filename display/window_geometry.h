#pragma once

#include <cstdint>

class QWidget;

namespace lumiquilt {

struct ProgramState;

/// The frame sizes, in pixels, that window sizes in twips are made of.
struct ScreenMetrics {
    int16_t captionHeight = 23;
    int16_t dialogFrameHeight = 3;
    int16_t sizingFrameHeight = 4;
    int16_t menuHeight = 20;
    int16_t twipsPerPixel = 15;
};

/// Reads the metrics of this desktop: twips per pixel from the primary screen's
/// logical resolution (15 at 96 dots per inch), the caption and menu heights from
/// the style; the frames keep their classic sizes.
ScreenMetrics readScreenMetrics();

void applyScreenMetrics(ProgramState& state, const ScreenMetrics& metrics);

/// Where a window goes on screen, in pixels: the frame's top left corner and the
/// client size.
struct WindowPlacement {
    int x = 0;
    int y = 0;
    int clientWidth = 0;
    int clientHeight = 0;
};

/// A window's outer box in twips, as the program computes it, turned into a
/// frame position and a client size: the width holds two sizing frames, the height
/// a caption and two dialog frames.
WindowPlacement placementFromTwips(const ProgramState& state, double left, double top, double width,
                                   double height);

/// Moves and sizes a top-level window by its outer box in twips.
void moveWindowTwips(QWidget* window, const ProgramState& state, double left, double top,
                     double width, double height);

/// Outer width and height of a window in twips, the reverse of the above.
double windowWidthTwips(const QWidget* window, const ProgramState& state);
double windowHeightTwips(const QWidget* window, const ProgramState& state);

/// Screen pixels per picture pixel for a window that shows a picture of width by
/// height: 1 when the picture fits the available area less the window's frame and
/// title, otherwise the factor that makes it fit. Everything the program stores or
/// compares stays in picture pixels; only what is shown is scaled.
double displayScale(double pictureWidth, double pictureHeight, double availableWidth,
                    double availableHeight, const ProgramState& state);
/// The same for the primary screen's available area.
double screenDisplayScale(const ProgramState& state, double pictureWidth, double pictureHeight);

/// The room a picture window has for its picture on this screen, read once on the
/// window thread, so that the display scale can be worked out on any thread.
struct PictureRoom {
    double width = 0;
    double height = 0;
};
PictureRoom screenPictureRoom(const ProgramState& state);
double displayScale(double pictureWidth, double pictureHeight, const PictureRoom& room);

/// The primary screen's size in twips.
double screenWidthTwips(const ProgramState& state);
double screenHeightTwips(const ProgramState& state);

}  // namespace lumiquilt
