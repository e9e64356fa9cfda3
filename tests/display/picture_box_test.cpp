#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QPixmap>

#include <functional>

#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

using testing::UiTest;

// Columns one pixel wide, black and white in turn: cut down by nearest pixels they
// stay black or white, scaled smoothly they turn grey.
QImage stripes(int width, int height) {
    QImage picture(width, height, QImage::Format_RGB32);
    for (int x = 0; x < width; ++x) {
        const QRgb value = x % 2 == 0 ? qRgb(0, 0, 0) : qRgb(255, 255, 255);
        for (int y = 0; y < height; ++y) {
            picture.setPixel(x, y, value);
        }
    }
    return picture;
}

// How many pixels of the shown picture are neither black nor white.
int greyPixels(QWidget& box) {
    const QImage shown = box.grab().toImage().convertToFormat(QImage::Format_RGB32);
    int grey = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            const int red = qRed(shown.pixel(x, y));
            grey += red > 20 && red < 235 ? 1 : 0;
        }
    }
    return grey;
}

TEST(PictureBox, QuickDisplayIsCoarseUntilSharpened) {
    PictureBox box(nullptr);
    box.setAutoSize(true);
    box.setDisplayScale(0.75);
    box.setPicture(stripes(80, 40));
    EXPECT_FALSE(box.showsCoarse());
    EXPECT_GT(greyPixels(box), 600);

    box.setQuickDisplay(true);
    box.setPicture(stripes(80, 40));
    EXPECT_EQ(box.size(), QSize(60, 30));
    EXPECT_TRUE(box.showsCoarse());
    EXPECT_EQ(greyPixels(box), 0);  // a paint while quick keeps it coarse

    box.sharpen();
    EXPECT_GT(greyPixels(box), 600);
    EXPECT_FALSE(box.showsCoarse());
    box.setPicture(stripes(80, 40));  // quick display is over
    EXPECT_FALSE(box.showsCoarse());
}

class SharpenAfterRun : public UiTest {};

// Calls back at each paint of the widget it watches.
class CoarseAtPaint : public QObject {
  public:
    explicit CoarseAtPaint(std::function<void()> onPaint) : m_onPaint(std::move(onPaint)) {}

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            m_onPaint();
        }
        return QObject::eventFilter(watched, event);
    }

  private:
    std::function<void()> m_onPaint;
};

// The series loads coarsely; the windows turn smooth only once the run is over and
// the montage has been painted.
TEST_F(SharpenAfterRun, PictureWindowsTurnSmoothAfterTheRun) {
    start();
    for (int k = 1; k <= 3; ++k) {
        testing::savePictureFile(stripes(1600, 1200),
                                 dir.path("wide" + std::to_string(k) + ".png"));
    }
    setFileName(dir.path("wide1.png"));
    // At the first paint of the montage made, how many series windows are still coarse.
    int coarseAtMontagePaint = -1;
    CoarseAtPaint watch([&] {
        if (coarseAtMontagePaint < 0 && form().montageWindow()->PictureFile->hasPicture()) {
            coarseAtMontagePaint = 0;
            for (int k = 1; k <= 3; ++k) {
                coarseAtMontagePaint += form().pictureWindow(k)->PictureFile->showsCoarse();
            }
        }
    });
    form().montageWindow()->PictureFile->installEventFilter(&watch);
    form().CommandGo_Click();
    ASSERT_TRUE(ui.messages.empty()) << lastMessage().text;
    for (int k = 1; k <= 3; ++k) {
        PictureBox& box = *form().pictureWindow(k)->PictureFile;
        ASSERT_LT(box.displayScale(), 1.0);
        EXPECT_TRUE(box.showsCoarse()) << k;
    }
    // The montage paints, then the windows sharpen: a few turns of the queue, well
    // before the half second after which they would sharpen anyway.
    auto anyCoarse = [&] {
        bool coarse = false;
        for (int k = 1; k <= 3; ++k) {
            coarse = coarse || form().pictureWindow(k)->PictureFile->showsCoarse();
        }
        return coarse;
    };
    for (int turn = 0; turn < 5 && anyCoarse(); ++turn) {
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(coarseAtMontagePaint, 3);
    for (int k = 1; k <= 3; ++k) {
        PictureBox& box = *form().pictureWindow(k)->PictureFile;
        EXPECT_FALSE(box.showsCoarse()) << k;
        EXPECT_GT(greyPixels(box), 1000) << k;
    }
}

}  // namespace
}  // namespace lumiquilt
