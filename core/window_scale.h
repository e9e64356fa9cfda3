#pragma once

namespace lumiquilt {

/// Factor from the window designs (1024 by 768 pixels at 15 twips a pixel) to a screen.
struct WindowScale {
    double scaleX = 1.0;
    double scaleY = 1.0;
};

/// widthPixels and heightPixels are the screen's size (or the one the command line
/// names); twipsX and twipsY its twips per pixel.
WindowScale computeWindowScale(double widthPixels, double heightPixels, double twipsX,
                               double twipsY);

}  // namespace lumiquilt
