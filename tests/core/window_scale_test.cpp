#include "core/window_scale.h"

#include <gtest/gtest.h>

namespace lumiquilt {
namespace {

TEST(ComputeWindowScale, DesignSizeAndOthers) {
    struct Row {
        const char* name;
        double w, h, tx, ty, sx, sy;
    };
    const Row rows[] = {
        {"design size", 1024, 768, 15, 15, 1, 1},
        {"within 20 pixels counts as design", 1044, 748, 15, 15, 1, 1},
        {"1024 by 800 is not the design size", 1024, 800, 15, 15, 1, 800.0 / 768},
        {"800 by 600", 800, 600, 15, 15, 800.0 / 1024, 600.0 / 768},
        {"large fonts at design size", 1024, 768, 12, 12, 12.0 / 15, 12.0 / 15},
        {"full hd", 1920, 1080, 15, 15, 1920.0 / 1024, 1080.0 / 768},
    };
    for (const auto& r : rows) {
        const WindowScale s = computeWindowScale(r.w, r.h, r.tx, r.ty);
        EXPECT_DOUBLE_EQ(s.scaleX, r.sx) << r.name;
        EXPECT_DOUBLE_EQ(s.scaleY, r.sy) << r.name;
    }
}

}  // namespace
}  // namespace lumiquilt
