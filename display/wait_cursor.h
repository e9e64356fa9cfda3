#pragma once

#include <QApplication>

namespace lumiquilt {

/// The hourglass of a long command: on and off as the command says, and off at the
/// latest when the command's front end goes, whichever way it ends.
class WaitCursor {
  public:
    WaitCursor() = default;
    ~WaitCursor() { set(false); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

    void set(bool on) {
        if (on && !m_on) {
            QApplication::setOverrideCursor(Qt::WaitCursor);
        } else if (!on && m_on) {
            QApplication::restoreOverrideCursor();
        }
        m_on = on;
    }

  private:
    bool m_on = false;
};

}  // namespace lumiquilt
