#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QPushButton>
#include <optional>

#include "core/runtime_error.h"
#include "display/form_picture.h"
#include "display/modal_ui.h"

namespace lumiquilt {

/// The blue bar that grows while the rows of a GIF are coded.
class ProgressStrip : public QWidget {
  public:
    explicit ProgressStrip(QWidget* parent) : QWidget(parent) {}
    void setPercent(int percent);
    int percent() const { return m_percent; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int m_percent = 0;
};

/// The small window that writes a picture as a GIF as soon as it is shown, shows
/// its progress, tells the user, and closes.
class FormGIF : public QDialog {
    Q_OBJECT
  public:
    FormGIF(QWidget* owner, ModalUi& ui, const QImage& picture, std::string fileName);

    QCheckBox* Check1 = nullptr;
    QPushButton* Command1 = nullptr;
    ProgressStrip* Picture2 = nullptr;

    /// Writes the file; a file error is kept for the caller.
    void Command1_Click();
    const std::optional<RuntimeError>& failure() const { return m_failure; }

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void saveAndClose();

    ModalUi& m_ui;
    QImage m_picture;
    std::string m_fileName;
    bool m_started = false;
    std::optional<RuntimeError> m_failure;
};

}  // namespace lumiquilt
