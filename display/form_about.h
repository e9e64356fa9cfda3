#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <memory>

#include "display/modal_ui.h"
#include "display/system_keys.h"

namespace lumiquilt {

/// The About box: the product's name, version, what it does, its web page and a
/// legal notice, with a way to the system's information program.
class frmAbout : public QDialog {
    Q_OBJECT
  public:
    frmAbout(ModalUi& ui, std::unique_ptr<SystemKeys> keys = platformSystemKeys(),
             QWidget* parent = nullptr);

    QLabel* picIcon = nullptr;
    QLabel* lblTitle = nullptr;
    QLabel* lblVersion = nullptr;
    QLabel* lblDescription = nullptr;
    QLabel* lblDisclaimer = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdSysInfo = nullptr;

    void cmdSysInfo_Click();

  private:
    ModalUi& m_ui;
    std::unique_ptr<SystemKeys> m_keys;
};

/// Starts the system's information program, or says that there is none.
void StartSysInfo(SystemKeys& keys, ModalUi& ui);

/// The mnuAbout command: opens the About box over the main window and returns;
/// the box deletes itself when it closes.
frmAbout* showAbout(QWidget* owner, ModalUi& ui);

}  // namespace lumiquilt
