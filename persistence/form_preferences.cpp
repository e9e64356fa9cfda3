#include "persistence/form_preferences.h"

#include <QButtonGroup>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <exception>

#include "core/form_montage.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "persistence/preferences.h"

namespace lumiquilt {

namespace {

// Opening and OK skip a failing step without a word and go on with the next.
template <typename Step>
void orSkip(Step&& step) {
    try {
        step();
    } catch (const RuntimeError&) {
    } catch (const std::exception&) {
    }
}

int16_t checkValue(const QCheckBox* box) {
    return box->isChecked() ? 1 : 0;
}

// A box shows 0 and 1 only; any other non-zero value stands as ticked.
void setCheck(QCheckBox* box, double value) {
    box->setChecked(value != 0);
}

const char* const kSmoothLabels[] = {
    "Sensitivity to swap based on improved smoothness",
    "Emphasis put on smoothness vs exposure",
    "Look at detailed areas vs background areas",
    "Sensitivity to replace regardless of exposure",
};

QColor qColorOf(uint32_t bgr) {
    return QColor(bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF);
}

}  // namespace

FormPreferences::FormPreferences(FormMontage& form, PreferencesShellTies* ties)
    : QWidget(&form, Qt::Dialog), f(form), m_ties(ties) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle("Preferences");
    buildControls();
    Form_Load();
}

void FormPreferences::buildControls() {
    auto* layout = new QVBoxLayout(this);

    Frame1 = new QGroupBox("Default Exposure Method", this);
    auto* methods = new QVBoxLayout(Frame1);
    auto* group = new QButtonGroup(Frame1);
    for (int i = 0; i < kMethodCount; ++i) {
        QRadioButton* option = new QRadioButton(Frame1);
        option->setToolTip("Set the default method for making the Montage");
        methods->addWidget(option);
        group->addButton(option, i);
        OptionMontageMethod[static_cast<size_t>(i)] = option;
    }
    layout->addWidget(Frame1);

    CheckUsed = new QCheckBox("Show the \"originating image\" window on creating a Montage", this);
    CheckUsed->setToolTip(
        "When you create a Montages do you want want to see which pictures the final picture was "
        "created from?");
    CheckUsed->setVisible(false);
    layout->addWidget(CheckUsed);

    CheckLoadImages = new QCheckBox("Load images on start up", this);
    CheckLoadImages->setToolTip(
        "When Clearstack starts up, do you want it to automatically load the last images opened?");
    layout->addWidget(CheckLoadImages);

    CheckShortcut = new QCheckBox("Add a shortcut to 'Lumiquilt' on to the Desktop", this);
    CheckShortcut->setToolTip("Easy start Clearstack from a Desktop icon");
    layout->addWidget(CheckShortcut);

    CheckRight =
        new QCheckBox("Add  'Lumiquilt' to the Windows Explorer Right Mouse Click menu", this);
    CheckRight->setToolTip(
        "You can find an image file with Windows Explorer and right click it to start "
        "Clearstack.    Older Windows versions have been known to have problems with MS Office "
        "toolbar with this option");
    layout->addWidget(CheckRight);

    auto* increment = new QHBoxLayout;
    Label1 = new QLabel("Default Increment size", this);
    Text1 = new QLineEdit("20", this);
    Text1->setToolTip("Set the default increment size");
    VScroll1 = new QScrollBar(Qt::Vertical, this);
    VScroll1->setRange(0, 32767);
    VScroll1->setToolTip("Set the default increment size");
    for (QWidget* w : {static_cast<QWidget*>(Label1), static_cast<QWidget*>(Text1),
                       static_cast<QWidget*>(VScroll1)}) {
        w->setVisible(false);
        increment->addWidget(w);
    }
    layout->addLayout(increment);

    auto* colour = new QHBoxLayout;
    PictureColor = new QLabel(this);
    PictureColor->setToolTip("Current Offset color");
    PictureColor->setFixedSize(40, 24);
    PictureColor->setFrameShape(QFrame::Box);
    PictureColor->setAutoFillBackground(true);
    CommandColor = new QPushButton("Change Target Color", this);
    CommandColor->setToolTip("Set the default color for the Offset Targets");
    colour->addWidget(PictureColor);
    colour->addWidget(CommandColor);
    colour->addStretch();
    layout->addLayout(colour);

    Frame2 = new QGroupBox("Smoothing Method", this);
    Frame2->setToolTip("Set the default method for making the Montage");
    auto* smoothing = new QGridLayout(Frame2);
    CheckAutoSmooth = new QCheckBox("Automatically smooth the Montage when created", Frame2);
    CheckAutoSmooth->setToolTip(
        "When you create a Montages do you want want to see which pictures the final picture was "
        "created from?");
    smoothing->addWidget(CheckAutoSmooth, 0, 0, 1, 3);
    for (int i = 0; i < 4; ++i) {
        const size_t k = static_cast<size_t>(i);
        LabelSmooth[k] = new QLabel(kSmoothLabels[i], Frame2);
        TextSmooth[k] = new QLineEdit(Frame2);
        TextSmooth[k]->setToolTip("Set the default increment size");
        VScrollSmooth[k] = new QScrollBar(Qt::Vertical, Frame2);
        VScrollSmooth[k]->setRange(1, 100);
        smoothing->addWidget(LabelSmooth[k], i + 1, 0);
        smoothing->addWidget(TextSmooth[k], i + 1, 1);
        smoothing->addWidget(VScrollSmooth[k], i + 1, 2);
    }
    CommandSmoothReset = new QPushButton("Reset Smoothing defaults", Frame2);
    CommandSmoothReset->setToolTip(
        "Press here to restore the original Smoothing sensitivity parameters");
    smoothing->addWidget(CommandSmoothReset, 5, 0, 1, 3);
    Frame2->setVisible(false);
    layout->addWidget(Frame2);

    CommandOK = new QPushButton("OK", this);
    CommandOK->setToolTip("Press here to save changes and return to Clearstack");
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(CommandOK);
    layout->addLayout(buttons);

    pairFieldAndBar(Text1, VScroll1);
    for (size_t k = 0; k < 4; ++k) {
        pairFieldAndBar(TextSmooth[k], VScrollSmooth[k]);
    }
    connect(CommandColor, &QPushButton::clicked, this, &FormPreferences::CommandColor_Click);
    connect(CommandSmoothReset, &QPushButton::clicked, this,
            &FormPreferences::CommandSmoothReset_Click);
    connect(CommandOK, &QPushButton::clicked, this, &FormPreferences::CommandOK_Click);
}

void FormPreferences::pairFieldAndBar(QLineEdit* field, QScrollBar* bar) {
    connect(field, &QLineEdit::textChanged, this, [field, bar] {
        // A number outside the bar's range stays in the field and leaves the bar.
        const double n = leadingNumber(field->text().toStdString());
        if (n != bar->value() && n >= bar->minimum() && n <= bar->maximum()) {
            bar->setValue(toInt32(n));
        }
    });
    connect(bar, &QScrollBar::valueChanged, this, [field](int value) {
        if (value != leadingNumber(field->text().toStdString())) {
            field->setText(QString::number(value));
        }
    });
}

void FormPreferences::Form_Load() {
    Settings& settings = f.settings();
    ProgramState& s = f.state();
    for (size_t i = 0; i < OptionMontageMethod.size(); ++i) {
        orSkip([&] { OptionMontageMethod[i]->setText(f.m.mnusimpleCol[i]->text()); });
    }
    orSkip([&] {
        const int16_t method = toInt16(settings.readNumber(prefkey::montageMethod));
        if (method < 0 || method >= kMethodCount) {
            throw RuntimeError(kSubscriptOutOfRange);
        }
        OptionMontageMethod[static_cast<size_t>(method)]->setChecked(true);
    });
    orSkip([&] { setCheck(CheckUsed, settings.readNumber(prefkey::originatingImage)); });
    orSkip([&] { Text1->setText(QString::fromStdString(settings.readKey(prefkey::increment))); });
    orSkip([&] {
        const int32_t value = toInt32(settings.readNumber(prefkey::increment));
        if (value < VScroll1->minimum() || value > VScroll1->maximum()) {
            throw RuntimeError(kInvalidProcedureCall);
        }
        VScroll1->setValue(value);
    });
    orSkip([&] { setPictureColor(static_cast<uint32_t>(toInt32(readTargetColor(settings)))); });
    orSkip([&] { setCheck(CheckShortcut, s.shortcutEnabled); });
    orSkip([&] { setCheck(CheckRight, s.rightMouseEnabled); });
    orSkip([&] { setCheck(CheckAutoSmooth, s.autoSmooth); });
    for (int i = 0; i < kSmoothFactorCount; ++i) {
        orSkip([&] {
            TextSmooth[static_cast<size_t>(i)]->setText(
                QString::fromStdString(factorFieldText(s, i)));
        });
    }
}

void FormPreferences::Form_Activate() {
    orSkip([&] { setCheck(CheckLoadImages, f.settings().readNumber(prefkey::loadImages)); });
}

void FormPreferences::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        Form_Activate();
    }
}

void FormPreferences::setPictureColor(uint32_t color) {
    m_pictureColor = color & 0xFFFFFF;
    QPalette palette = PictureColor->palette();
    palette.setColor(QPalette::Window, qColorOf(m_pictureColor));
    PictureColor->setPalette(palette);
}

void FormPreferences::CommandColor_Click() {
    // The dialog starts from the colour shown; Cancel hands that colour back, and
    // it is stored all the same.
    uint32_t color = m_pictureColor;
    orSkip([&] {
        if (const auto chosen = f.ui().chooseColor(m_pictureColor)) {
            color = *chosen;
        }
    });
    orSkip([&] { f.settings().writeKey(prefkey::targetColor, std::to_string(color)); });
    orSkip([&] { setPictureColor(color); });
    orSkip([&] { f.setTargetColor(color); });
}

void FormPreferences::CommandSmoothReset_Click() {
    ProgramState& s = f.state();
    resetSmoothing(s);
    CheckAutoSmooth->setChecked(true);
    for (int i = 0; i < kSmoothFactorCount; ++i) {
        orSkip([&] {
            TextSmooth[static_cast<size_t>(i)]->setText(
                QString::fromStdString(factorFieldText(s, i)));
        });
    }
}

void FormPreferences::CommandOK_Click() {
    Settings& settings = f.settings();
    ProgramState& s = f.state();
    orSkip([&] {
        for (int i = 0; i < kMethodCount; ++i) {
            if (OptionMontageMethod[static_cast<size_t>(i)]->isChecked()) {
                settings.writeKey(prefkey::montageMethod, std::to_string(i));
            }
        }
    });
    orSkip([&] {
        settings.writeKey(prefkey::originatingImage, std::to_string(checkValue(CheckUsed)));
    });
    orSkip([&] {
        settings.writeKey(prefkey::loadImages, std::to_string(checkValue(CheckLoadImages)));
    });
    orSkip([&] {
        settings.writeKey(prefkey::increment,
                          plainDecimal(leadingNumber(Text1->text().toStdString())));
    });

    orSkip([&] { s.shortcutEnabled = checkValue(CheckShortcut); });
    orSkip([&] { settings.writeKey(prefkey::shortcut, std::to_string(s.shortcutEnabled)); });
    orSkip([&] {
        if (s.shortcutEnabled == 1 && m_ties != nullptr) {
            m_ties->makeDesktopShortcut();
        }
    });

    // The switch in memory says whether the verb is believed to stand: a box left
    // as it was touches nothing.
    orSkip([&] {
        if (m_ties == nullptr) {
            return;
        }
        if (CheckRight->isChecked() && s.rightMouseEnabled == 0) {
            m_ties->addContextMenuVerb();
        } else if (!CheckRight->isChecked() && s.rightMouseEnabled == 1) {
            m_ties->removeContextMenuVerb();
        }
    });
    orSkip([&] { s.rightMouseEnabled = checkValue(CheckRight); });
    orSkip([&] { settings.writeKey(prefkey::rightmouse, std::to_string(s.rightMouseEnabled)); });

    orSkip([&] { s.showUsedWindow = checkValue(CheckUsed); });
    orSkip([&] { s.autoSmooth = checkValue(CheckAutoSmooth); });
    orSkip([&] { settings.writeKey(prefkey::autoSmooth, std::to_string(s.autoSmooth)); });

    // A field that is no number leaves its setting as it was; the key is written
    // from the setting all the same.
    for (int i = 0; i < kSmoothFactorCount; ++i) {
        const size_t k = static_cast<size_t>(i);
        orSkip([&] { setFactorFromField(s, i, TextSmooth[k]->text().toStdString()); });
        orSkip([&] { settings.writeKey(kSmoothFactorKeys[k], factorKeyText(s, i)); });
    }
    close();
}

PreferencesCommands::PreferencesCommands(FormMontage& form) : QObject(&form), f(form) {}

PreferencesCommands& PreferencesCommands::of(FormMontage& form) {
    auto* commands = form.findChild<PreferencesCommands*>(QString(), Qt::FindDirectChildrenOnly);
    if (commands == nullptr) {
        commands = new PreferencesCommands(form);
    }
    return *commands;
}

void PreferencesCommands::mnuPreferences_Click() {
    // A dialog that OK or its close has unloaded is gone, though not yet deleted.
    if (m_dialog == nullptr || !m_dialog->isVisible()) {
        m_dialog = new FormPreferences(f, m_ties);
    }
    m_dialog->show();
    m_dialog->raise();
    m_dialog->activateWindow();
    // Without a window manager the activation may never come.
    m_dialog->Form_Activate();
}

}  // namespace lumiquilt
