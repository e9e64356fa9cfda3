#pragma once

#include <QImage>
#include <string>

namespace lumiquilt {

/// The program's icon at size by size pixels: a quilt of nine blocks, each as
/// one exposure of a series would show it, on a dark rounded tile.
QImage appIconImage(int size);

/// The same icon as an SVG document, from the same shapes.
std::string appIconSvg();

/// The splash picture, 480 by 300 pixels. Its ring of arcs is drawn later, round
/// the sun at (380, 40).
QImage splashPicture();

}  // namespace lumiquilt
