#include "core/window_scale.h"

#include "core/numbers.h"

namespace lumiquilt {

WindowScale computeWindowScale(double widthPixels, double heightPixels, double twipsX,
                               double twipsY) {
    const double w = roundHalfEven(widthPixels);
    const double h = roundHalfEven(heightPixels);
    // Screens within 20 pixels of the design size count as the design size.
    if (w >= 1004 && w <= 1044 && h >= 748 && h <= 788) {
        return {twipsX / 15.0, twipsY / 15.0};
    }
    return {(w / 1024.0) * twipsX / 15.0, (h / 768.0) * twipsY / 15.0};
}

}  // namespace lumiquilt
