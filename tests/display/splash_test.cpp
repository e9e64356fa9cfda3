#include "display/splash.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <cmath>
#include <vector>

namespace lumiquilt {
namespace {

// One way a splash can go: the clock at load, then each event by the clock.
struct Step {
    enum Kind { tick, key, mouse } kind;
    float at;
    bool closedAfter = false;
};

struct SplashRow {
    const char* name;
    float start;
    std::vector<Step> steps;
};

class SplashTimingTest : public ::testing::TestWithParam<SplashRow> {
  protected:
    ScriptedModalUi ui;
    float now = 0;
};

TEST_P(SplashTimingTest, ClosesAtTheRightTick) {
    now = GetParam().start;
    Splash splash(ui, [this] { return now; });
    splash.show();
    int n = 0;
    for (const Step& step : GetParam().steps) {
        now = step.at;
        if (step.kind == Step::tick) {
            splash.Timer1_Timer();
        } else if (step.kind == Step::key) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QApplication::sendEvent(&splash, &press);
        } else {
            QMouseEvent press(QEvent::MouseButtonPress, QPointF(10, 200), QPointF(10, 200),
                              Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(splash.Picture1, &press);
        }
        EXPECT_EQ(splash.unloaded(), step.closedAfter) << "step " << n;
        EXPECT_EQ(splash.isVisible(), !step.closedAfter) << "step " << n;
        ++n;
    }
    EXPECT_EQ(splash.result(), QDialog::Accepted);
    EXPECT_FALSE(splash.Timer1->isActive());
    EXPECT_TRUE(ui.messages.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Splash, SplashTimingTest,
    ::testing::Values(
        SplashRow{"AboveFourSeconds",
                  1000,
                  {{Step::tick, 1000.1f},
                   {Step::tick, 1003.9f},
                   {Step::tick, 1004.0f},
                   {Step::tick, 1004.1f, true}}},
        SplashRow{"KeyInTheFirstTick", 1000, {{Step::key, 1000.05f}, {Step::tick, 1000.1f, true}}},
        SplashRow{"MouseOnThePicture",
                  1000,
                  {{Step::tick, 1000.1f}, {Step::mouse, 1001.5f}, {Step::tick, 1001.6f, true}}},
        SplashRow{"FirstSecondAfterMidnight", 0.5f, {{Step::tick, 0.6f, true}}},
        SplashRow{"JustBeforeMidnight",
                  86398.0f,
                  {{Step::tick, 86399.0f}, {Step::tick, 86399.9f}, {Step::tick, 0.05f, true}}},
        // A tick held up past the first second after midnight still ends it.
        SplashRow{
            "LateTickPastMidnight", 86399.5f, {{Step::tick, 86399.6f}, {Step::tick, 1.3f, true}}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SplashTest, RoundedShapeBlueBorderAndATickRedrawsTheRingAndNothingElse) {
    ScriptedModalUi ui;
    Splash splash(ui, [] { return 500.0f; });
    const QImage picture = splash.Picture1->picture();
    ASSERT_EQ(splash.size(), picture.size());
    const int w = picture.width();
    const int h = picture.height();
    const QRegion shape = splash.mask();
    // Corner ellipses 100 pixels across: a corner's pixel is outside, the middle
    // of each edge inside.
    for (QPoint corner :
         {QPoint(3, 3), QPoint(w - 4, 3), QPoint(3, h - 4), QPoint(w - 4, h - 4), QPoint(12, 12)}) {
        EXPECT_FALSE(shape.contains(corner)) << corner.x() << "," << corner.y();
    }
    for (QPoint edge : {QPoint(w / 2, 0), QPoint(0, h / 2), QPoint(w - 1, h / 2),
                        QPoint(w / 2, h - 1), QPoint(16, 16)}) {
        EXPECT_TRUE(shape.contains(edge)) << edge.x() << "," << edge.y();
    }
    const QRgb blue = qRgb(0, 0, 255);
    for (QPoint edge :
         {QPoint(w / 2, 0), QPoint(0, h / 2), QPoint(w - 2, h / 2), QPoint(w / 2, h - 2)}) {
        EXPECT_EQ(picture.pixel(edge), blue) << edge.x() << "," << edge.y();
    }
    EXPECT_NE(picture.pixel(w - 1, h / 2), blue);
    // Each quarter circle, halfway round: 50 pixels from its centre.
    const int r = 50;
    const int d = 35;  // 50 / sqrt(2)
    for (QPoint c : {QPoint(r - d, r - d), QPoint(w - 2 - r + d, r - d),
                     QPoint(r - d, h - 2 - r + d), QPoint(w - 2 - r + d, h - 2 - r + d)}) {
        int bluest = 0;
        for (int y = c.y() - 1; y <= c.y() + 1; ++y) {
            for (int x = c.x() - 1; x <= c.x() + 1; ++x) {
                const QColor p = picture.pixelColor(x, y);
                bluest = std::max(bluest, p.blue() - p.red());
            }
        }
        EXPECT_GT(bluest, 120) << c.x() << "," << c.y();
    }

    const QImage before = picture.copy();
    splash.Timer1_Timer();
    splash.Timer1_Timer();
    const QImage after = splash.Picture1->picture();
    const double cx = 380;
    const double cy = 596.0 / 15;
    const double radius = 380.0 / 15;
    int changed = 0;
    int outside = 0;
    for (int y = 0; y < after.height(); ++y) {
        for (int x = 0; x < after.width(); ++x) {
            if (before.pixel(x, y) == after.pixel(x, y)) {
                continue;
            }
            ++changed;
            const double distance = std::hypot(x + 0.5 - cx, y + 0.5 - cy);
            outside += std::abs(distance - radius) > 4;
        }
    }
    EXPECT_GT(changed, 200);
    EXPECT_EQ(outside, 0);
    EXPECT_FALSE(splash.unloaded());
}

TEST(SplashTest, FewColoursGetOneMessageOnActivation) {
    for (int depth : {4, 8, 24}) {
        ScriptedModalUi ui;
        Splash splash(ui, [] { return 500.0f; });
        splash.bitsPerPixel = [depth] { return depth; };
        splash.show();
        QApplication::processEvents();
        QApplication::processEvents();
        if (depth < 8) {
            ASSERT_EQ(ui.messages.size(), 1u);
            EXPECT_EQ(ui.messages[0].text,
                      "This software works best with 256 colours or more in your screen colour "
                      "palette.");
            EXPECT_EQ(ui.messages[0].title, "but you can still use it with 16 colours");
            EXPECT_EQ(ui.messages[0].icon, MessageIcon::information);
        } else {
            EXPECT_TRUE(ui.messages.empty()) << depth;
        }
    }
}

}  // namespace
}  // namespace lumiquilt
