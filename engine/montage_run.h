#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/program_state.h"
#include "engine/measures.h"
#include "series/image_offsets.h"
#include "series/pixel_buffers.h"

namespace lumiquilt {

/// Stages of a Create Image run; each is the line number its general message names.
enum CreateImageStage : int {
    kStageIncrementCheck = 500,
    kStageIncrement = 1000,
    kStageHideWindows = 2000,
    kStageCompleteName = 4000,
    kStageDigits = 4200,
    kStageFirstNumber = 5000,
    kStageLoadMember = 5100,
    kStageArrange = 8000,
    kStageOffsets = 8100,
    kStageNoOffsets = 8200,
    kStageBuffers = 8400,
    kStageBlockLoop = 8500,
    kStageBlockCopy = 10000,
    kStagePreviewRow = 10300,
    kStageLoopEnd = 10400,
    kStageReport = 11000,
    kStageClose = 15000,
};

/// The increment text as a run finds it: text that is no number becomes "10",
/// a value below 1 becomes "1"; any other text stays as it is.
std::string checkIncrementText(const std::string& text);

/// The block size of a checked text: its leading number rounded half to even.
/// Throws RuntimeError 6 when it leaves 16 bits.
int16_t incrementFromText(const std::string& text);

/// Shown once for each image of another size among images 2 to 10.
using DimensionMessageFn = std::function<void(const std::string& text)>;

/// Loads everything (mode 0): sizes montagePixels to montageWidth by montageHeight
/// and reads the montage picture (blank when its bits are null) into slot 100;
/// checks the sizes; sizes seriesPixels to image 1's frame and reads every image.
/// images[k - 1] is image k. Frames read ahead (when given) stand in for the
/// pictures they hold: taken over whole when they hold every image, copied frame by
/// frame otherwise; the result is the same samples either way.
void loadPixelBuffers(ProgramState& state, const PictureView& montage, int montageWidth,
                      int montageHeight, const std::vector<PictureView>& images,
                      const DimensionMessageFn& showDimensionMessage,
                      SeriesFrames* readAhead = nullptr);

/// Reloads the method windows' pictures into slots 100 to 106 (mode 1).
void loadMethodPixelBuffers(ProgramState& state, const std::vector<PictureView>& methodPictures);

/// Sizes previewPixels by the padding rule from the preview picture's size and reads
/// the picture in at its real size, not the padded one.
void loadPreviewBuffer(ProgramState& state, const PictureView& preview);

/// Called after each finished row of blocks with the row's first buffer row.
using BlockRowFn = std::function<void(int16_t y0)>;

/// The block loop: for each block corner, the image with the strictly highest
/// measure (the lower number on a tie) gives the whole block to slot 100. A failure
/// of a measure is told to onMeasureError and the loop goes on. A large montage
/// that cannot fail is shared with a second thread; rowDone and onMeasureError are
/// still called on the calling thread, in the order of the rows.
void runBlockLoop(ProgramState& state, int16_t rowShift, const BlockRowFn& rowDone,
                  const MeasureErrorFn& onMeasureError = nullptr);

/// The smoothing step behind the hidden commands and the "autoSmooth" setting.
/// It changes no pixel; slot is a method window's number or 999 for the main one.
void smoothMontage(PixelBuffers& buffers, int slot, Flag fromMenu);

}  // namespace lumiquilt
