#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "core/message.h"
#include "core/program_state.h"
#include "series/image_offsets.h"
#include "series/pixel_buffers.h"
#include "series/series_name.h"

namespace lumiquilt {

/// The user's choices as a run reads them from the front end's controls.
struct RunChoices {
    std::string incrementText;
    std::array<bool, kMethodCount> methodChecked{};
    std::array<bool, kIgnorableImages> ignored{};
    bool addOffsets = false;
    bool offsetsMin = false;
    bool offsetsMax = false;
    bool offsetsSame = false;
};

/// How a Create Image run ended.
enum class RunEnd {
    completed,   ///< the montage (or a project's picture) stands and the report is set
    endedEarly,  ///< refused before anything was arranged; the closing steps did not run
    stopped,     ///< a message stopped the run; the closing steps ran
};

/// What only a front end can do for a run. The window program answers with its
/// windows and controls, the command-line tool with its decoded series and standard
/// error. The run calls these in the order of its stages; the defaults do nothing,
/// which is what a front end without windows wants.
class CreateImageFront {
  public:
    virtual ~CreateImageFront() = default;

    /// The choices as the controls hold them now; read at the start and again for
    /// the report.
    virtual RunChoices choices() = 0;
    virtual void setIncrementText(const std::string& text) = 0;
    virtual std::string fileNameText() = 0;
    virtual void setFileNameText(const std::string& text) = 0;
    virtual void message(const std::string& text, const std::string& title, MessageIcon icon) = 0;

    /// The last run's series buffer, no longer the state's, as the next series is
    /// about to load: a front end whose reader laid it out may take it back. What it
    /// leaves goes back to the system, or to the next buffer of its size.
    virtual void seriesLetGo(SampleBuffer&& /*pixels*/) {}
    /// The series is named and split at its digits: a front end may start reading its
    /// members ahead of the loading loop.
    virtual void seriesFound(const SeriesPattern& /*pattern*/) {}
    /// Loads series member k (1-based) from fileName, or throws RuntimeError: 53 when
    /// it is missing, 481 when it is no picture. The picture stays available to
    /// memberPicture until the next run loads another.
    virtual void loadMember(int k, const std::string& fileName) = 0;
    /// Member k as loaded; it must outlive the buffers' read of it. A member that
    /// stands in seriesFrames() may come without its samples (null bits).
    virtual PictureView memberPicture(int k) = 0;
    /// The members of this run's loading loop, read ahead into their places in a
    /// series buffer, or null. The buffers take them over instead of reading the
    /// pictures again; the front end lets go of them then.
    virtual SeriesFrames* seriesFrames() { return nullptr; }

    /// The hourglass, from the start of a run to its end.
    virtual void setBusy(bool /*busy*/) {}
    /// Removes the montage window's picture; it reads as black from then on.
    virtual void clearMontagePicture() {}
    /// Hides or unloads what the last run showed; failures are passed over.
    virtual void hideLastRun(const std::string& /*firstFileName*/) {}
    /// The named first file is not there: the recent list forgets it.
    virtual void forgetMissingFile(const std::string& /*name*/) {}
    /// Sizes and places the windows for imageWidth by imageHeight.
    virtual void arrangeWindows() {}
    /// The centre of image k's target mark as it stands now, in picture pixels, Y
    /// downward; read when an offset mode is on.
    virtual MarkCentre markCentre(int /*k*/) { return kDesignMarkCentre; }
    /// In the minimum or maximum area the montage window takes imageWidth by
    /// imageHeight, which the area may have changed.
    virtual void montageResized() {}
    /// The minimum area left nothing: the montage window goes.
    virtual void hideMontage() {}
    /// Empties the caption of the used-blocks label.
    virtual void clearUsedCaption() {}
    /// Lets the window queue run once.
    virtual void yieldEvents() {}
    /// The montage window's picture, read into slot 100 before the block loop.
    virtual PictureView montagePicture() { return {}; }
    /// The progress preview begins, just before the buffers are read.
    virtual void startPreview() {}
    /// seriesPixels holds the series now: a front end that will not run again may let
    /// its own copies of the pictures go.
    virtual void seriesRead() {}
    /// A row of blocks from buffer row y0 is done.
    virtual void previewRow(int16_t /*y0*/) {}
    /// Slot 100 is finished: show it.
    virtual void showMontage() {}
    /// The caption of the used-blocks label, for the report.
    virtual std::string usedCaption() { return {}; }
    /// Before the report: the settings, the Window menu, the used-blocks window.
    virtual void runReported(const std::string& /*completedName*/) {}
    /// The last closing step, with the trimmed name the user typed.
    virtual void runClosed(const std::string& /*fileName*/) {}
};

/// Create Image: reads the series named by the front end's file name, loads it,
/// applies the offset step, walks the blocks into slot 100 and sets
/// propertiesString. With evaluationPass 2 or more the series already loaded is
/// used again; with montageFromProject set the block loop is left out (and the flag
/// cleared). Every failure becomes a message through the front end.
RunEnd createImage(ProgramState& state, CreateImageFront& front);

}  // namespace lumiquilt
