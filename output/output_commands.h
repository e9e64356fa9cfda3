#pragma once

#include <string>

namespace lumiquilt {

class FormMontage;
class FormMontagePicture;
class FormPicture;
class PictureWindow;

/// Everything that takes a finished picture out of the program: Save As, the
/// clipboard, the outside editor and printing, from the File menu and from the
/// picture windows' popups. Works on the pictures in the windows, not the buffers.
class OutputCommands {
  public:
    explicit OutputCommands(FormMontage& form) : f(form) {}
    OutputCommands(const OutputCommands&) = delete;
    OutputCommands& operator=(const OutputCommands&) = delete;

    enum class PrintSize { natural, fitToPage, halfPage };

    /// The File menu's entries for the main montage.
    void mnuJPG_Click();
    void mnucopy_Click();
    void mnuEditor_Click();
    void mnuPrint_Click(PrintSize size);
    void mnuSelect_Click();

    /// Save As for any picture window; suffix goes into the proposed name.
    void SaveAsSub(PictureWindow* window, const std::string& suffix);
    void copyToClipboard(const PictureWindow* source);
    void openInEditor(const PictureWindow* source);
    /// Prints a window's picture; a source picture prints without its target mark.
    void printPicture(const PictureWindow* source, PrintSize size, FormPicture* marksOf = nullptr);

    /// The popup entries of a new picture window, and of a montage or method window.
    void connectPictureCommands(FormPicture* window);
    void connectMontageCommands(FormMontagePicture* window);

    /// How long an outside program gets to read its file before it is deleted.
    double outsideProgramWait = 3.0;
    /// The printer chosen in the Printer Wizard; empty for the system's default.
    std::string printerName;

  private:
    /// True when the main montage window shows a montage; otherwise tells the user
    /// there is none to `verb` ("save", "copy", "edit", "print").
    bool montageOnView(const char* verb);
    /// Waits outsideProgramWait seconds with the window queue running.
    void waitForOutsideProgram();

    FormMontage& f;
};

}  // namespace lumiquilt
