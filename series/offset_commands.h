#pragma once

#include <cstdint>

#include "series/image_offsets.h"

class QAction;

namespace lumiquilt {

class FormMontage;
class FormPicture;

/// The target marks on the picture windows and the commands around them: "Use
/// Image Offsets" with the status strip, the three display areas, dragging a mark,
/// the mark colour. Create Image reads the marks through markCentre.
class OffsetCommands {
  public:
    explicit OffsetCommands(FormMontage& form) : f(form) {}
    OffsetCommands(const OffsetCommands&) = delete;
    OffsetCommands& operator=(const OffsetCommands&) = delete;

    /// The click of "Use Image Offsets", after the menu has turned its check over.
    void mnuAddOffsets_Click();
    /// The click of a display entry, after the menu has turned its check over.
    void mnuActivateOffsets_Click(QAction* entry);
    /// "Set Offset Target Color" on a picture window's popup.
    void mnuOffsetColor_Click();

    /// The mouse on a picture window's `PictureFile`, in picture pixels.
    void PictureFile_MouseDown(FormPicture* window, int button, float x, float y);
    void PictureFile_MouseMove(FormPicture* window, int button, float x, float y);
    void PictureFile_MouseUp(int button);

    /// Rewrites the status strip from the marks of the visible picture windows.
    void updateTargetStatus();
    /// Shows the status strip along the foot of the main window and brings it up.
    void placeStatusStrip();
    /// Rounds the colour (0xBBGGRR) to 32 bits and gives it to the marks of every
    /// picture window.
    void setTargetColor(double color);
    uint32_t targetColor() const { return m_targetColor; }

    /// The centre of image k's mark as it stands now.
    MarkCentre markCentre(int k);

    /// The mouse events and popup entry of a new picture window.
    void connectPictureWindow(FormPicture* window);

  private:
    FormMontage& f;
    uint32_t m_targetColor = 0;
};

}  // namespace lumiquilt
