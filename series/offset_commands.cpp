// The target marks, the status strip and the offset entries of the menu.
#include "series/offset_commands.h"

#include <QCoreApplication>
#include <cmath>
#include <utility>
#include <vector>

#include "core/form_montage.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "display/window_geometry.h"

namespace lumiquilt {

namespace {

constexpr int16_t kNoMarkHeld = -999;

QColor colorOf(uint32_t bgr) {
    return QColor(bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF);
}

void letEventsRun() {
    QCoreApplication::processEvents();
}

}  // namespace

void OffsetCommands::connectPictureWindow(FormPicture* w) {
    w->PictureFile->setMarkColor(colorOf(m_targetColor));
    QObject::connect(
        w->PictureFile, &PictureBox::mouseDown, &f,
        [this, w](int button, int, float x, float y) { PictureFile_MouseDown(w, button, x, y); });
    QObject::connect(
        w->PictureFile, &PictureBox::mouseMove, &f,
        [this, w](int button, int, float x, float y) { PictureFile_MouseMove(w, button, x, y); });
    QObject::connect(w->PictureFile, &PictureBox::mouseUp, &f,
                     [this](int button, int, float, float) { PictureFile_MouseUp(button); });
    QObject::connect(w->mnuOffsetColor, &QAction::triggered, &f,
                     [this] { mnuOffsetColor_Click(); });
}

void OffsetCommands::mnuAddOffsets_Click() {
    if (!f.m.mnuAddOffsets->isChecked()) {
        // The display entries keep their checks.
        for (int k = 1; k < kImageSlots; ++k) {
            if (f.hasPictureWindow(k)) {
                f.pictureWindow(k)->PictureFile->setMarksVisible(false);
            }
        }
        f.statusWindow()->unload();
        return;
    }
    for (int k = 1; k < kImageSlots; ++k) {
        if (f.hasPictureWindow(k)) {
            f.pictureWindow(k)->PictureFile->setMarksVisible(true);
        }
    }
    updateTargetStatus();
    placeStatusStrip();
}

void OffsetCommands::placeStatusStrip() {
    const ProgramState& s = f.state();
    // The strip goes to the foot of the main window, and then three frames higher.
    FormStatus* status = f.statusWindow();
    const double tpp = std::max<int>(1, s.twipsPerPixel);
    const int width = static_cast<int>(std::lround(windowWidthTwips(&f, s) / tpp));
    const int height = static_cast<int>(std::lround(windowHeightTwips(&f, s) / tpp));
    const int labelHeight = std::max(1, status->LabelStatus->height());
    status->setGeometry(0, height - status->height(), width, labelHeight);
    status->show();
    status->setGeometry(0, height - status->height() - 3 * s.dialogFrameHeight, width, labelHeight);
    status->raise();
}

void OffsetCommands::mnuActivateOffsets_Click(QAction* entry) {
    // So none or one of the three is checked.
    if (entry->isChecked()) {
        for (QAction* other :
             {f.m.mnuActivateOffsetsMin, f.m.mnuActivateOffsetsMax, f.m.mnuActivateOffsetsSame}) {
            if (other != entry) {
                other->setChecked(false);
            }
        }
    }
}

void OffsetCommands::mnuOffsetColor_Click() {
    // Only the marks take the colour; the settings keep theirs.
    if (const std::optional<uint32_t> chosen = f.ui().chooseColor(m_targetColor)) {
        setTargetColor(*chosen);
    }
}

void OffsetCommands::PictureFile_MouseDown(FormPicture* w, int /*button*/, float x, float y) {
    // Measured from the inner circle's corner at the outer circle's size, and
    // whether the mark is on view or not.
    const QRect& outer = w->PictureFile->Shape1(0);
    const QRect& inner = w->PictureFile->Shape1(1);
    if (std::abs(x - inner.left()) < outer.width() && std::abs(y - inner.top()) < outer.height()) {
        ProgramState& s = f.state();
        try {
            const int16_t grabX = toInt16(x);
            const int16_t grabY = toInt16(y);
            s.markGrabX = grabX;
            s.markGrabY = grabY;
        } catch (const RuntimeError&) {
            // A place beyond 16 bits can't be held.
        }
    }
}

void OffsetCommands::PictureFile_MouseMove(FormPicture* w, int button, float x, float y) {
    ProgramState& s = f.state();
    if (button != PictureBox::left || s.markGrabX == kNoMarkHeld) {
        return;
    }
    try {
        const int16_t dx = toInt16(static_cast<double>(x) - s.markGrabX);
        const int16_t dy = toInt16(static_cast<double>(y) - s.markGrabY);
        // Events that come in here may move the mark as well; each move adds its own
        // step to wherever the mark then stands.
        letEventsRun();
        PictureBox* box = w->PictureFile;
        box->moveShape(0, box->Shape1(0).left() + dx, box->Shape1(0).top() + dy);
        box->moveShape(1, box->Shape1(1).left() + dx, box->Shape1(1).top() + dy);
        letEventsRun();
        updateTargetStatus();
        s.markGrabX = toInt16(x);
        s.markGrabY = toInt16(y);
    } catch (const RuntimeError&) {
        // The mouse beyond 16 bits of the grab: the mark stays where it is.
    }
}

void OffsetCommands::PictureFile_MouseUp(int /*button*/) {
    // The popup of a right button opens from the window itself.
    f.state().markGrabX = kNoMarkHeld;
}

void OffsetCommands::updateTargetStatus() {
    std::vector<std::pair<int, MarkCentre>> visible;
    for (int k = 1; k < kImageSlots; ++k) {
        if (f.hasPictureWindow(k) && f.pictureWindow(k)->isVisible()) {
            visible.emplace_back(k, markCentre(k));
        }
    }
    QLabel* label = f.statusWindow()->LabelStatus;
    label->setText(QString::fromStdString(targetStatusText(visible)));
    label->adjustSize();
}

void OffsetCommands::setTargetColor(double color) {
    try {
        m_targetColor = static_cast<uint32_t>(toInt32(color));
    } catch (const RuntimeError&) {
        // A colour beyond 32 bits in the settings leaves the marks as they are.
        return;
    }
    for (int k = 1; k < kImageSlots; ++k) {
        if (f.hasPictureWindow(k)) {
            f.pictureWindow(k)->PictureFile->setMarkColor(colorOf(m_targetColor));
        }
    }
}

MarkCentre OffsetCommands::markCentre(int k) {
    const QRect& outer = f.pictureWindow(k)->PictureFile->Shape1(0);
    return {outer.left() + outer.width() / 2.0, outer.top() + outer.height() / 2.0};
}

}  // namespace lumiquilt
