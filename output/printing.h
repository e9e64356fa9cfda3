#pragma once

#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRectF>
#include <QSizeF>
#include <string>

namespace lumiquilt {

/// Where a picture of pictureSize (in the printer's units) goes on a page of
/// pageSize: natural size, 95 % of the page's width and height each, or half of
/// each. Always at the top left; the shape is not kept.
QRectF printRectangle(int size, QSizeF pictureSize, QSizeF pageSize);

/// "Printer Wizard": the printers this system knows, and the one to use.
class Pselect : public QDialog {
    Q_OBJECT
  public:
    Pselect(QWidget* owner, const std::string& current);

    QLabel* Lbl_Default = nullptr;
    QLabel* Label1 = nullptr;
    QListWidget* Lst_Devices = nullptr;
    QPushButton* Cmd_Test = nullptr;
    QPushButton* Cmd_Exit = nullptr;

    /// The printer chosen with OK.
    const std::string& chosen() const { return m_chosen; }

  private:
    std::string m_chosen;
};

}  // namespace lumiquilt
