#include <gtest/gtest.h>
#include <QApplication>
#include <QMouseEvent>
#include <QTimer>
#include <QWindow>

#include "display/window_geometry.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

using testing::UiTest;

class OffsetCommandsTest : public UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        start();
        form().activateFirstTime();
    }
    // A run on a series of `count` pictures, so that the picture windows stand.
    void loadSeries(int count, int width = 60, int height = 40) {
        makeSeries("s", count, width, height);
        setFileName(dir.path("s1.png"));
        setIncrement("10");
        form().CommandGo_Click();
        ASSERT_TRUE(ui.messages.empty()) << lastMessage().text;
    }
    PictureBox* box(int k) { return form().pictureWindow(k)->PictureFile; }
    std::string statusText() { return form().statusWindow()->LabelStatus->text().toStdString(); }

    // Mouse events at widget places; `held` are the buttons down after the event.
    void mouse(QEvent::Type type, int k, Qt::MouseButton button, Qt::MouseButtons held,
               QPointF at) {
        QMouseEvent e(type, at, box(k)->mapToGlobal(at), button, held, Qt::NoModifier);
        QApplication::sendEvent(box(k), &e);
    }
    void press(int k, Qt::MouseButton b, QPointF at) {
        mouse(QEvent::MouseButtonPress, k, b, b, at);
    }
    void move(int k, Qt::MouseButtons held, QPointF at) {
        mouse(QEvent::MouseMove, k, Qt::NoButton, held, at);
    }
    void release(int k, Qt::MouseButton b, QPointF at) {
        mouse(QEvent::MouseButtonRelease, k, b, Qt::NoButton, at);
    }
    void drag(int k, QPointF from, QPointF to) {
        press(k, Qt::LeftButton, from);
        move(k, Qt::LeftButton, to);
        release(k, Qt::LeftButton, to);
    }
};

TEST_F(OffsetCommandsTest, UseImageOffsetsShowsTheMarksAndPlacesTheStrip) {
    loadSeries(2);
    EXPECT_FALSE(box(1)->marksVisible());
    form().m.mnuActivateOffsetsMax->trigger();
    form().m.mnuAddOffsets->trigger();
    EXPECT_TRUE(box(1)->marksVisible());
    EXPECT_TRUE(box(2)->marksVisible());
    FormStatus* status = form().statusWindow();
    EXPECT_TRUE(status->isVisible());
    EXPECT_EQ(statusText(), "     Image 1 = 13 , 13    Image 2 = 13 , 13");
    // Placed twice: the second time three dialog frames above the main window's foot.
    const int outerWidth = form().width() + 2 * state.sizingFrameHeight;
    const int outerHeight = form().height() + state.captionHeight + 2 * state.dialogFrameHeight;
    const int labelHeight = status->LabelStatus->height();
    EXPECT_EQ(status->geometry(), QRect(0, outerHeight - labelHeight - 3 * state.dialogFrameHeight,
                                        outerWidth, labelHeight));

    form().m.mnuAddOffsets->trigger();
    EXPECT_FALSE(box(1)->marksVisible());
    EXPECT_FALSE(box(2)->marksVisible());
    EXPECT_FALSE(status->isVisible());
    EXPECT_EQ(statusText(), "Image 1 = ");
    EXPECT_TRUE(form().m.mnuActivateOffsetsMax->isChecked());  // the entries keep their checks
}

TEST_F(OffsetCommandsTest, GrabIsMeasuredFromTheInnerCornerAtTheOuterSize) {
    loadSeries(1);
    struct Row {
        double x, y;
        int grabX;  // -999: not grabbed
    };
    // The inner circle's corner is (8, 8) and the outer circle 26 across.
    const Row rows[] = {
        {8, 8, 8},    {33.5, 8, 34}, {34, 8, -999}, {-17.5, 8, -18}, {-18, 8, -999},
        {8, 33.9, 8}, {8, 34, -999}, {8.5, 8, 8},   {9.5, 20, 10},   {40, 40, -999},
    };
    for (const Row& r : rows) {
        state.markGrabX = -999;
        press(1, Qt::LeftButton, QPointF(r.x, r.y));
        EXPECT_EQ(state.markGrabX, r.grabX) << r.x << "," << r.y;
    }
}

TEST_F(OffsetCommandsTest, DraggingMovesBothCirclesAndTheStatusFollows) {
    loadSeries(2);
    form().m.mnuAddOffsets->trigger();
    press(2, Qt::LeftButton, QPointF(13, 13));
    EXPECT_EQ(state.markGrabX, 13);
    move(2, Qt::LeftButton, QPointF(40.4, 25.6));
    EXPECT_EQ(box(2)->Shape1(0), QRect(27, 13, 26, 26));
    EXPECT_EQ(box(2)->Shape1(1), QRect(35, 21, 10, 10));
    EXPECT_EQ(statusText(), "     Image 1 = 13 , 13    Image 2 = 40 , 26");
    EXPECT_EQ(state.markGrabX, 40);
    EXPECT_EQ(state.markGrabY, 26);
    release(2, Qt::LeftButton, QPointF(40, 26));
    EXPECT_EQ(state.markGrabX, -999);
    // Nothing held: a move moves nothing, and the other picture's mark never moved.
    move(2, Qt::LeftButton, QPointF(50, 30));
    EXPECT_EQ(box(2)->Shape1(0).topLeft(), QPoint(27, 13));
    EXPECT_EQ(box(1)->Shape1(0).topLeft(), QPoint(0, 0));
}

TEST_F(OffsetCommandsTest, RightButtonGrabsButMovesNothing) {
    loadSeries(1);
    press(1, Qt::RightButton, QPointF(13, 13));
    EXPECT_EQ(state.markGrabX, 13);
    move(1, Qt::RightButton, QPointF(30, 30));
    move(1, Qt::LeftButton | Qt::RightButton, QPointF(30, 30));
    EXPECT_EQ(box(1)->Shape1(0).topLeft(), QPoint(0, 0));
    release(1, Qt::RightButton, QPointF(30, 30));
    EXPECT_EQ(state.markGrabX, -999);
    form().pictureWindow(1)->mnuMenu->hide();  // its release opened the popup
}

TEST_F(OffsetCommandsTest, HiddenMarkIsDraggedUnseenEvenOffThePicture) {
    loadSeries(1);
    ASSERT_FALSE(box(1)->marksVisible());
    drag(1, QPointF(13, 13), QPointF(20, 15));
    EXPECT_EQ(box(1)->Shape1(0).topLeft(), QPoint(7, 2));
    EXPECT_FALSE(form().statusWindow()->isVisible());
    EXPECT_EQ(statusText(), "     Image 1 = 20 , 15");
    // Off the picture to negative places, which the next run takes as they are.
    drag(1, QPointF(20, 15), QPointF(-20, -30));
    EXPECT_EQ(box(1)->Shape1(0).topLeft(), QPoint(-33, -43));
    EXPECT_EQ(statusText(), "     Image 1 = -20 , -30");
    form().m.mnuAddOffsets->trigger();
    form().CommandGo_Click();  // same area
    EXPECT_EQ(state.offsetX(1), -20);
    EXPECT_EQ(state.offsetY(1), -30);
}

TEST_F(OffsetCommandsTest, EventsRunBeforeTheMarkMovesAndAgainBeforeTheStatus) {
    loadSeries(1);
    press(1, Qt::LeftButton, QPointF(13, 13));
    std::vector<std::pair<int, std::string>> seen;  // the mark's left and the status text
    QTimer::singleShot(0, &form(), [&] {
        seen.emplace_back(box(1)->Shape1(0).left(), statusText());
        QTimer::singleShot(0, &form(),
                           [&] { seen.emplace_back(box(1)->Shape1(0).left(), statusText()); });
    });
    move(1, Qt::LeftButton, QPointF(23, 13));
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].first, 0);   // first yield: not moved yet
    EXPECT_EQ(seen[1].first, 10);  // second yield: moved, the status not yet told
    EXPECT_NE(seen[1].second, "     Image 1 = 23 , 13");
    EXPECT_EQ(statusText(), "     Image 1 = 23 , 13");
}

TEST_F(OffsetCommandsTest, ColourDialogColoursEveryMarkAndWritesNothing) {
    loadSeries(2);
    form().setTargetColor(0x0000FF);       // red, as "Target color" would give it
    ui.colorAnswers.push_back(0xFF8000u);  // blue 255, green 128, red 0
    form().pictureWindow(2)->mnuOffsetColor->trigger();
    ASSERT_EQ(ui.colorRequests.size(), 1u);
    EXPECT_EQ(ui.colorRequests[0], 0x0000FFu);  // the dialog starts from the marks' colour
    EXPECT_EQ(box(1)->markColor(), QColor(0, 128, 255));
    EXPECT_EQ(box(2)->markColor(), QColor(0, 128, 255));
    EXPECT_EQ(form().targetColor(), 0xFF8000u);
    EXPECT_EQ(settings->readKey("Target color"), "0");
    // Cancel changes nothing.
    form().pictureWindow(1)->mnuOffsetColor->trigger();
    EXPECT_EQ(ui.colorRequests.size(), 2u);
    EXPECT_EQ(box(1)->markColor(), QColor(0, 128, 255));
}

TEST_F(OffsetCommandsTest, ClosingAWindowOrLoadingImageFilesPutsTheMarksAway) {
    loadSeries(2);
    form().m.mnuAddOffsets->trigger();
    drag(2, QPointF(13, 13), QPointF(30, 30));
    // A closed window comes back with its mark at the design place.
    form().pictureWindow(2)->mnuClose->trigger();
    EXPECT_EQ(box(2)->Shape1(0), QRect(0, 0, 26, 26));
    EXPECT_EQ(box(2)->Shape1(1), QRect(8, 8, 10, 10));
    EXPECT_FALSE(box(2)->marksVisible());
    // Loading image files switches offsets off.
    ASSERT_TRUE(box(1)->marksVisible());
    form().mnuLoad_Click();
    EXPECT_FALSE(form().m.mnuAddOffsets->isChecked());
    EXPECT_FALSE(box(1)->marksVisible());
    EXPECT_FALSE(form().statusWindow()->isVisible());
}

TEST_F(OffsetCommandsTest, PictureWindowsBelongToTheMainWindow) {
    loadSeries(1);
    for (QWidget* w :
         std::initializer_list<QWidget*>{form().pictureWindow(1), form().montageWindow(),
                                         form().usedWindow(), form().statusWindow()}) {
        w->show();
        ASSERT_NE(w->windowHandle(), nullptr);
        EXPECT_EQ(w->windowHandle()->transientParent(), form().windowHandle())
            << w->windowTitle().toStdString();
        // Only a dialog-like window is kept above its owner by the window systems.
        EXPECT_EQ(w->windowType(), Qt::Dialog) << w->windowTitle().toStdString();
    }
}

TEST(DisplayScale, OnlyPicturesLargerThanTheRoomAreReduced) {
    ProgramState s;
    s.sizingFrameHeight = 4;
    s.captionHeight = 23;
    s.dialogFrameHeight = 3;
    struct Row {
        double width, height, expected;
    };
    // The room is 1280 - 8 by 1024 - 29.
    const Row rows[] = {
        {640, 480, 1.0},
        {1272, 995, 1.0},
        {2544, 995, 0.5},
        {6000, 4000, 1272.0 / 6000},
        {4000, 6000, 995.0 / 6000},
        {0, 0, 1.0},
    };
    for (const Row& r : rows) {
        EXPECT_DOUBLE_EQ(displayScale(r.width, r.height, 1280, 1024, s), r.expected)
            << r.width << "x" << r.height;
    }
}

TEST_F(OffsetCommandsTest, LargePictureIsShownReducedAndMarkedInPicturePixels) {
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    const int width = 3 * room.width();
    const int height = 3 * room.height();
    loadSeries(2, width, height);
    const double scale = box(1)->displayScale();
    ASSERT_LT(scale, 0.34);
    EXPECT_DOUBLE_EQ(scale, screenDisplayScale(state, width, height));
    EXPECT_EQ(box(1)->size(), QSize(static_cast<int>(std::lround(width * scale)),
                                    static_cast<int>(std::lround(height * scale))));
    EXPECT_EQ(box(1)->picture().size(), QSize(width, height));
    EXPECT_EQ(state.imageWidth, width);
    // The window and the montage window fit the room.
    EXPECT_LE(form().pictureWindow(1)->width(), room.width());
    EXPECT_LE(form().montageWindow()->PictureFile->width(), room.width());
    EXPECT_EQ(form().montageWindow()->PictureFile->picture().size(), QSize(width, height));
    // The far corner of the picture can be reached and marked.
    drag(2, QPointF(13 * scale, 13 * scale), QPointF((width - 1) * scale, (height - 1) * scale));
    const MarkCentre centre = form().offsets().markCentre(2);
    EXPECT_NEAR(centre.x, width - 1, 1.0);
    EXPECT_NEAR(centre.y, height - 1, 1.0);
}

}  // namespace
}  // namespace lumiquilt
