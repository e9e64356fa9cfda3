#include "display/form_about.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QPixmap>
#include <QVBoxLayout>

#include "core/files.h"
#include "core/form_montage.h"
#include "core/version.h"
#include "display/artwork.h"

namespace lumiquilt {

namespace {

constexpr const char* kTitle = "Lumiquilt";

}  // namespace

frmAbout::frmAbout(ModalUi& ui, std::unique_ptr<SystemKeys> keys, QWidget* parent)
    : QDialog(parent), m_ui(ui), m_keys(std::move(keys)) {
    setWindowTitle(QString("About ") + kTitle);

    picIcon = new QLabel(this);
    picIcon->setPixmap(QPixmap::fromImage(appIconImage(64)));
    picIcon->setAlignment(Qt::AlignTop);

    lblTitle = new QLabel("Lumiquilt", this);
    QFont titleFont = lblTitle->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.8);
    titleFont.setBold(true);
    lblTitle->setFont(titleFont);

    lblVersion = new QLabel(
        QString("Version %1.%2.%3").arg(kVersionMajor).arg(kVersionMinor).arg(kVersionRevision),
        this);

    const QString page = kProductWebPage;
    lblDescription = new QLabel(
        "Lumiquilt combines a number of pictures of one scene, taken at different "
        "exposures, and presents a single well exposed picture.<br><a href=\"" +
            page + "\">" + page.toHtmlEscaped() + "</a>",
        this);
    lblDescription->setWordWrap(true);
    lblDescription->setTextFormat(Qt::RichText);
    lblDescription->setTextInteractionFlags(Qt::LinksAccessibleByMouse |
                                            Qt::LinksAccessibleByKeyboard);
    connect(lblDescription, &QLabel::linkActivated, this,
            [this](const QString& link) { m_ui.openWithDesktop(link.toStdString()); });

    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);

    lblDisclaimer = new QLabel(
        "Copyright (c) 2026 The Lumiquilt developers. Lumiquilt is free software under the "
        "MIT License: you may use, copy, change and pass it on, provided this notice goes "
        "with it. It comes as it is, without warranty of any kind; the authors are not "
        "liable for any loss that comes of its use.",
        this);
    lblDisclaimer->setWordWrap(true);
    QFont small = lblDisclaimer->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    lblDisclaimer->setFont(small);

    cmdOK = new QPushButton("OK", this);
    cmdOK->setDefault(true);
    cmdSysInfo = new QPushButton("&System Info...", this);
    connect(cmdOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(cmdSysInfo, &QPushButton::clicked, this, &frmAbout::cmdSysInfo_Click);

    lblDescription->setMinimumWidth(320);
    lblDisclaimer->setMinimumWidth(300);

    auto* text = new QVBoxLayout;
    text->addWidget(lblTitle);
    text->addWidget(lblVersion);
    text->addSpacing(6);
    text->addWidget(lblDescription);
    auto* top = new QHBoxLayout;
    top->setSpacing(16);
    top->addWidget(picIcon, 0, Qt::AlignTop);
    top->addLayout(text, 1);

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdSysInfo);
    buttons->addStretch();
    auto* bottom = new QHBoxLayout;
    bottom->setSpacing(16);
    bottom->addWidget(lblDisclaimer, 1);
    bottom->addLayout(buttons);

    auto* all = new QVBoxLayout(this);
    all->addLayout(top);
    all->addWidget(line);
    all->addLayout(bottom);
    // The box takes the size its wrapped texts need, and keeps it.
    all->setSizeConstraint(QLayout::SetFixedSize);
}

void frmAbout::cmdSysInfo_Click() {
    StartSysInfo(*m_keys, m_ui);
}

void StartSysInfo(SystemKeys& keys, ModalUi& ui) {
    std::string path;
    bool found = GetKeyValue(keys, kHkeyLocalMachine, "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO",
                             "PATH", path);
    if (!found && GetKeyValue(keys, kHkeyLocalMachine, "SOFTWARE\\Microsoft\\Shared Tools Location",
                              "MSINFO", path)) {
        // Only this second key names a folder, and only here the program is looked for.
        const std::string program = path + "/MSINFO32.EXE";
        if (fileExists(program)) {
            path = program;
            found = true;
        }
    }
    if (found && ui.startProgram(path, {})) {
        return;
    }
    ui.messageBox("System Information Is Unavailable At This Time", kTitle, MessageIcon::none,
                  MessageButtons::ok);
}

frmAbout* showAbout(QWidget* owner, ModalUi& ui) {
    auto* about = new frmAbout(ui, platformSystemKeys(), owner);
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->open();
    return about;
}

}  // namespace lumiquilt
