// The nine print commands and the Printer Wizard.
#include "output/printing.h"

#include <QApplication>
#include <QGridLayout>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QScreen>

#include "core/form_montage.h"
#include "output/output_commands.h"

namespace lumiquilt {

QRectF printRectangle(int size, QSizeF pictureSize, QSizeF pageSize) {
    // Page sizes are read as whole numbers, the products worked in double.
    const double w = static_cast<int>(pageSize.width());
    const double h = static_cast<int>(pageSize.height());
    switch (static_cast<OutputCommands::PrintSize>(size)) {
        case OutputCommands::PrintSize::fitToPage:
            return {0, 0, w * 0.95, h * 0.95};
        case OutputCommands::PrintSize::halfPage:
            return {0, 0, w / 2, h / 2};
        case OutputCommands::PrintSize::natural:
            break;
    }
    return {QPointF(0, 0), pictureSize};
}

void OutputCommands::mnuPrint_Click(PrintSize size) {
    if (montageOnView("print")) {
        printPicture(f.montageWindow(), size);
    }
}

void OutputCommands::printPicture(const PictureWindow* source, PrintSize size,
                                  FormPicture* marksOf) {
    // The target mark doesn't print; it comes back as it was, whatever happens.
    const bool marks = marksOf != nullptr && marksOf->PictureFile->marksVisible();
    struct RestoreMarks {
        FormPicture* window;
        bool visible;
        ~RestoreMarks() {
            if (window != nullptr) {
                window->PictureFile->setMarksVisible(visible);
            }
        }
    } restore{marksOf, marks};
    if (marksOf != nullptr) {
        marksOf->PictureFile->setMarksVisible(false);
    }

    QPrinter printer(QPrinter::HighResolution);
    if (!printerName.empty()) {
        printer.setPrinterName(QString::fromStdString(printerName));
    }
    if (!f.ui().choosePrinter(printer)) {
        return;  // Cancel ends the command without a word
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const QImage picture = source->PictureFile->picture();
    QPainter painter;
    if (!picture.isNull() && painter.begin(&printer)) {
        // The picture's natural size is its size on this screen.
        const QScreen* screen = QGuiApplication::primaryScreen();
        const double dpi = screen != nullptr ? screen->logicalDotsPerInchX() : 96.0;
        const double scale = printer.resolution() / dpi;
        const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());
        const QRectF target =
            printRectangle(static_cast<int>(size),
                           QSizeF(picture.width() * scale, picture.height() * scale), page.size());
        painter.drawImage(target, picture);
        painter.end();
    }
    QApplication::restoreOverrideCursor();
}

void OutputCommands::mnuSelect_Click() {
    Pselect wizard(&f, printerName);
    if (wizard.exec() == QDialog::Accepted) {
        printerName = wizard.chosen();
    }
}

Pselect::Pselect(QWidget* owner, const std::string& current) : QDialog(owner) {
    setWindowTitle("Printer Wizard");
    const QPrinterInfo standard = QPrinterInfo::defaultPrinter();
    const QString name = current.empty() ? standard.printerName() : QString::fromStdString(current);
    const QPrinterInfo info = QPrinterInfo::printerInfo(name);
    Lbl_Default = new QLabel("Current Printer:\r\n" + name + " on " + info.location(), this);
    Label1 = new QLabel("Current Devices", this);
    Lst_Devices = new QListWidget(this);
    for (const QString& device : QPrinterInfo::availablePrinterNames()) {
        Lst_Devices->addItem(device);
        if (device == name) {
            Lst_Devices->setCurrentRow(Lst_Devices->count() - 1);
        }
    }
    Cmd_Test = new QPushButton("&OK", this);
    Cmd_Exit = new QPushButton("&Cancel", this);
    auto* layout = new QGridLayout(this);
    layout->addWidget(Lbl_Default, 0, 0, 1, 2);
    layout->addWidget(Label1, 1, 0, 1, 2);
    layout->addWidget(Lst_Devices, 2, 0, 1, 2);
    layout->addWidget(Cmd_Test, 3, 0);
    layout->addWidget(Cmd_Exit, 3, 1);
    connect(Cmd_Test, &QPushButton::clicked, this, [this] {
        if (Lst_Devices->currentItem() != nullptr) {
            m_chosen = Lst_Devices->currentItem()->text().toStdString();
        }
        accept();
    });
    connect(Cmd_Exit, &QPushButton::clicked, this, &QDialog::reject);
}

}  // namespace lumiquilt
