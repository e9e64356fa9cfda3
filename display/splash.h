#pragma once

#include <QDialog>
#include <QTimer>
#include <functional>

#include "display/form_picture.h"
#include "display/modal_ui.h"

namespace lumiquilt {

/// Seconds since midnight, as a 32-bit float: the platform's Timer.
float secondsSinceMidnight();

/// The start-up window: the splash picture with rounded corners and a ring of
/// changing colours. It closes itself about four seconds after it loaded, at the
/// next tick after a key or mouse press, or when midnight passes.
class Splash : public QDialog {
    Q_OBJECT
  public:
    /// Loads the window; `clock` stands in for the Timer (tests give their own).
    explicit Splash(ModalUi& ui, std::function<float()> clock = secondsSinceMidnight,
                    QWidget* parent = nullptr);

    PictureBox* Picture1 = nullptr;
    QTimer* Timer1 = nullptr;

    /// The screen's bits per pixel; tests replace it.
    std::function<int()> bitsPerPixel;

    /// One tick of Timer1: draws the ring anew and closes the window when its time
    /// is up.
    void Timer1_Timer();
    /// What the window does when it first becomes active: the colour-depth check.
    void activateEvent();

    float startTime() const { return m_startTime; }
    /// True once a tick has unloaded the window.
    bool unloaded() const { return m_unloaded; }

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void drawBorder();
    void endEarly();

    ModalUi& m_ui;
    std::function<float()> m_clock;
    QImage m_canvas;
    float m_startTime = 0;
    bool m_activated = false;
    bool m_unloaded = false;
};

/// Shows the splash modally at start-up and returns when it has closed itself. A
/// platform with no screen to show it on (offscreen, minimal) skips it.
void showSplash(ModalUi& ui);

}  // namespace lumiquilt
