#pragma once

#include <QImage>
#include <QStringList>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/message.h"

class QWidget;
class QPrinter;

namespace lumiquilt {

enum class MessageButtons { ok, okCancel, yesNo, yesNoCancel };
enum class MessageResult { ok, cancel, yes, no };

/// One message box as the user saw it.
struct MessageRecord {
    std::string text;
    std::string title;
    MessageIcon icon = MessageIcon::none;
    MessageButtons buttons = MessageButtons::ok;
};

/// What a file dialog is opened with.
struct FileDialogRequest {
    std::string title;
    std::string filter;  ///< "Caption|pattern;pattern|Caption|pattern|"
    std::string fileName;
    std::string initialFolder;
};

/// Every modal interaction of the program: message boxes, dialogs, the clipboard,
/// starting programs and opening files. The window layer talks to the user only
/// through this, so that tests can answer and read everything.
class ModalUi {
  public:
    virtual ~ModalUi() = default;

    virtual MessageResult messageBox(const std::string& text, const std::string& title,
                                     MessageIcon icon,
                                     MessageButtons buttons = MessageButtons::ok) = 0;
    /// The chosen file, or nothing on Cancel.
    virtual std::optional<std::string> openFileName(const FileDialogRequest& request) = 0;
    virtual std::optional<std::string> saveFileName(const FileDialogRequest& request) = 0;
    /// The chosen colour as 0xBBGGRR, or nothing on Cancel.
    virtual std::optional<uint32_t> chooseColor(uint32_t initial) = 0;
    virtual void setClipboardImage(const QImage& image) = 0;
    /// Opens a file or an address in the desktop's application for it.
    virtual bool openWithDesktop(const std::string& fileOrAddress) = 0;
    /// Starts a program without waiting for it.
    virtual bool startProgram(const std::string& program, const QStringList& arguments) = 0;
    /// The print dialog; false on Cancel.
    virtual bool choosePrinter(QPrinter& printer) = 0;
};

/// The real thing: Qt's message boxes and dialogs, owned by a parent window.
class QtModalUi : public ModalUi {
  public:
    explicit QtModalUi(QWidget* parent = nullptr) : m_parent(parent) {}
    void setParent(QWidget* parent) { m_parent = parent; }

    MessageResult messageBox(const std::string& text, const std::string& title, MessageIcon icon,
                             MessageButtons buttons) override;
    std::optional<std::string> openFileName(const FileDialogRequest& request) override;
    std::optional<std::string> saveFileName(const FileDialogRequest& request) override;
    std::optional<uint32_t> chooseColor(uint32_t initial) override;
    void setClipboardImage(const QImage& image) override;
    bool openWithDesktop(const std::string& fileOrAddress) override;
    bool startProgram(const std::string& program, const QStringList& arguments) override;
    bool choosePrinter(QPrinter& printer) override;

  private:
    QWidget* m_parent;
};

/// For tests: records every box and request, and answers from queues. A box with
/// no queued answer gets the first button (OK or Yes); a dialog with none, Cancel.
class ScriptedModalUi : public ModalUi {
  public:
    std::vector<MessageRecord> messages;
    std::vector<FileDialogRequest> fileRequests;
    /// The colour each colour dialog started from.
    std::vector<uint32_t> colorRequests;
    std::vector<std::string> opened;
    std::vector<std::pair<std::string, QStringList>> started;
    std::vector<QImage> clipboard;

    std::deque<MessageResult> messageAnswers;
    std::deque<std::optional<std::string>> fileAnswers;
    std::deque<std::optional<uint32_t>> colorAnswers;
    /// A PDF file to print into, or nothing for Cancel.
    std::deque<std::optional<std::string>> printerAnswers;
    /// Start programs for real (they are only recorded otherwise).
    bool reallyStartPrograms = false;
    /// Runs while any dialog is open, to look at the program's state then.
    std::function<void()> duringDialog;

    MessageResult messageBox(const std::string& text, const std::string& title, MessageIcon icon,
                             MessageButtons buttons) override;
    std::optional<std::string> openFileName(const FileDialogRequest& request) override;
    std::optional<std::string> saveFileName(const FileDialogRequest& request) override;
    std::optional<uint32_t> chooseColor(uint32_t initial) override;
    void setClipboardImage(const QImage& image) override;
    bool openWithDesktop(const std::string& fileOrAddress) override;
    bool startProgram(const std::string& program, const QStringList& arguments) override;
    bool choosePrinter(QPrinter& printer) override;
};

/// Turns "Caption|*.a;*.b|All|*.*|" into Qt's "Caption (*.a *.b);;All (*.*)".
QString qtFilterFrom(const std::string& filter);

}  // namespace lumiquilt
