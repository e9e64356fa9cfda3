// Compare All Exposure Methods and Evaluate Increments in the window program: the
// method ticks, the result windows in their staircase, the messages.
#include "evaluation/evaluation_commands.h"

#include <QApplication>

#include "core/form_montage.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "display/wait_cursor.h"
#include "display/window_geometry.h"
#include "engine/command_go.h"
#include "engine/measures.h"

namespace lumiquilt {

namespace {

double leftTwips(const QWidget* w, const ProgramState& s) {
    return static_cast<double>(w->x()) * s.twipsPerPixel;
}

double topTwips(const QWidget* w, const ProgramState& s) {
    return static_cast<double>(w->y()) * s.twipsPerPixel;
}

/// The window program's side of the passes.
class EvaluationWindows : public EvaluationFront {
  public:
    explicit EvaluationWindows(FormMontage& form)
        : f(form), s(form.state()), m_road(createImageWindows(form)) {}
    EvaluationWindows(const EvaluationWindows&) = delete;
    EvaluationWindows& operator=(const EvaluationWindows&) = delete;

    CreateImageFront& road() override { return *m_road; }
    int tickedMethod() override {
        for (int i = 0; i < kMethodCount; ++i) {
            if (f.m.mnusimpleCol[static_cast<size_t>(i)]->isChecked()) {
                return i;
            }
        }
        return -1;
    }
    void tickOnly(int method) override {
        for (int i = 0; i < kMethodCount; ++i) {
            f.m.mnusimpleCol[static_cast<size_t>(i)]->setChecked(i == method);
        }
    }
    bool confirm(const std::string& text, const std::string& title) override {
        return f.ui().messageBox(text, title, MessageIcon::question, MessageButtons::okCancel) ==
               MessageResult::ok;
    }
    void announce(const std::string& text, const std::string& title) override {
        f.ui().messageBox(text, title, MessageIcon::exclamation);
    }
    void setBusy(bool busy) override { m_cursor.set(busy); }
    void yieldEvents() override { f.yieldEvents(); }
    void keepMethodResult(int slot, int method) override;
    void raisePreview() override {
        if (f.hasPreviewWindow()) {
            f.previewWindow()->raise();
        }
    }
    void showComparisonBest(int slot) override {
        if (f.hasMethodWindow(slot)) {
            f.montageWindow()->PictureFile->setPicture(
                f.methodWindow(slot)->PictureFile->picture());
        }
    }
    void raiseMontage() override { f.montageWindow()->raise(); }
    void commandClosed() override {
        f.updateWindowMenu();
        f.update();
    }

  private:
    FormMontage& f;
    ProgramState& s;
    std::unique_ptr<CreateImageFront> m_road;
    WaitCursor m_cursor;
};

// Each result window hangs under its dominant-image window, and each pair stands 80
// pixels right of and one title bar lower than the pair before.
void EvaluationWindows::keepMethodResult(int slot, int method) {
    const double tpp = s.twipsPerPixel;
    const double step = checkedInt16((s.captionHeight + 2 * s.dialogFrameHeight) * s.twipsPerPixel);
    const QString caption = QString::fromStdString(
        std::string(kMethodCaptions[static_cast<size_t>(method)]) + " used.");
    FormUsed* used = f.usedWindow();
    FormMontagePicture* montage = f.montageWindow();
    FormUsed* methodUsed = f.methodUsedWindow(slot);
    FormMontagePicture* methodMontage = f.methodWindow(slot);

    methodUsed->LabelUsed->setText(used->LabelUsed->text());
    if (slot == 0) {
        moveWindowTwips(methodUsed, s, leftTwips(used, s) + 80 * tpp, topTwips(used, s),
                        windowWidthTwips(used, s), windowHeightTwips(used, s));
        methodUsed->setWindowTitle(caption);
        if (s.showUsedWindow != 0) {
            methodUsed->show();
            f.yieldEvents();
        }
    } else {
        const FormUsed* before = f.methodUsedWindow(slot - 1);
        moveWindowTwips(methodUsed, s, leftTwips(before, s) + 80 * tpp, topTwips(before, s) + step,
                        windowWidthTwips(used, s), windowHeightTwips(used, s));
        f.yieldEvents();
    }

    moveWindowTwips(methodMontage, s, leftTwips(methodUsed, s), topTwips(methodUsed, s) + step,
                    windowWidthTwips(montage, s), windowHeightTwips(montage, s));
    methodMontage->PictureFile->setGeometry(montage->PictureFile->geometry());
    methodMontage->setWindowTitle(caption);
    methodMontage->show();
    if (slot == 0) {
        methodMontage->raise();
    }
    methodMontage->PictureFile->setPicture(montage->PictureFile->picture());

    if (slot != 0) {
        methodUsed->setWindowTitle(caption);
        if (s.showUsedWindow != 0) {
            methodUsed->show();
            methodMontage->raise();
        }
    }
    methodUsed->LabelUsed->move(s.sizingFrameHeight, s.dialogFrameHeight);
}

}  // namespace

void EvaluationCommands::run(Passes passes, const char* routine) {
    if (f.runInProgress()) {
        return;
    }
    const FormMontage::RunGuard guard(f);
    EvaluationWindows front(f);
    try {
        passes(f.state(), front, seamScore);
    } catch (const ProcessEnding&) {
    } catch (const RuntimeError& error) {
        // A failure between the passes, never one of Create Image's own.
        f.ui().messageBox(generalMessage(error.number(), error.description(), 0, routine),
                          std::string(kGeneralMessageTitle), MessageIcon::critical);
    }
}

void EvaluationCommands::mnuAllMethods_Click() {
    run(&compareAllMethods, "mnuAllMethods");
}

void EvaluationCommands::mnuEvaluate_Click() {
    run(&evaluateIncrements, "mnuEvaluate");
}

void EvaluationCommands::mnuEvaluateAll_Click() {
    run(&evaluateIncrementsAllMethods, "mnuEvaluateAll");
}

}  // namespace lumiquilt
