#pragma once

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QWidget>
#include <array>
#include <cstdint>

#include "core/program_state.h"

namespace lumiquilt {

class FormMontage;

/// The desktop ties that the Preferences dialog's OK reaches. Each call may
/// fail by throwing; OK then goes on with its next step.
class PreferencesShellTies {
  public:
    virtual ~PreferencesShellTies() = default;
    /// Makes (or overwrites) the desktop shortcut to the program.
    virtual void makeDesktopShortcut() = 0;
    /// Adds the file manager's verb that opens a file with the program.
    virtual void addContextMenuVerb() = 0;
    /// Removes that verb and tells the user whether it went.
    virtual void removeContextMenuVerb() = 0;
};

/// "Preferences": shows the settings and writes them at OK. Modeless, owned by the
/// main window; it reads its values when it is created, and OK or closing it
/// unloads it. No Cancel: closing saves nothing. The hidden controls exist and take
/// their values like the others, so that their keys change only in the file.
class FormPreferences : public QWidget {
    Q_OBJECT
  public:
    /// Builds the controls and runs the opening steps. ties may be null: OK then
    /// only writes the keys of the two desktop switches.
    FormPreferences(FormMontage& form, PreferencesShellTies* ties);

    QGroupBox* Frame1 = nullptr;
    std::array<QRadioButton*, kMethodCount> OptionMontageMethod{};
    QCheckBox* CheckUsed = nullptr;
    QCheckBox* CheckLoadImages = nullptr;
    QCheckBox* CheckShortcut = nullptr;
    QCheckBox* CheckRight = nullptr;
    QLabel* Label1 = nullptr;
    QLineEdit* Text1 = nullptr;
    QScrollBar* VScroll1 = nullptr;
    QLabel* PictureColor = nullptr;
    QPushButton* CommandColor = nullptr;
    QGroupBox* Frame2 = nullptr;
    QCheckBox* CheckAutoSmooth = nullptr;
    std::array<QLabel*, 4> LabelSmooth{};
    std::array<QLineEdit*, 4> TextSmooth{};
    std::array<QScrollBar*, 4> VScrollSmooth{};
    QPushButton* CommandSmoothReset = nullptr;
    QPushButton* CommandOK = nullptr;

    /// The colour that PictureColor shows, as 0xBBGGRR.
    uint32_t pictureColor() const { return m_pictureColor; }

    void CommandColor_Click();
    void CommandSmoothReset_Click();
    void CommandOK_Click();
    /// Each time the window becomes active.
    void Form_Activate();

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void buildControls();
    void Form_Load();
    void setPictureColor(uint32_t color);
    /// Keeps a field and its scroll bar in step, both ways.
    void pairFieldAndBar(QLineEdit* field, QScrollBar* bar);

    FormMontage& f;
    PreferencesShellTies* m_ties;
    uint32_t m_pictureColor = 0;
};

/// The Preferences command of the main window, and the ties its dialog reaches.
/// Lives as a child of the main window; `of` finds or makes it.
class PreferencesCommands : public QObject {
    Q_OBJECT
  public:
    static PreferencesCommands& of(FormMontage& form);

    /// Shows the dialog, creating it when it isn't loaded, and brings it up.
    void mnuPreferences_Click();
    /// The loaded dialog, or null.
    FormPreferences* dialog() const { return m_dialog; }
    /// Not owned; null until the desktop ties are in place.
    void setShellTies(PreferencesShellTies* ties) { m_ties = ties; }

  private:
    explicit PreferencesCommands(FormMontage& form);

    FormMontage& f;
    QPointer<FormPreferences> m_dialog;
    PreferencesShellTies* m_ties = nullptr;
};

}  // namespace lumiquilt
