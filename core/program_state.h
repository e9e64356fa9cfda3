#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "series/pixel_buffers.h"

namespace lumiquilt {

/// Flags are 16-bit: -1 true, 0 false.
using Flag = int16_t;
inline constexpr Flag kTrue = -1;
inline constexpr Flag kFalse = 0;

inline constexpr int kImageSlots = 31;  ///< slot 0 holds no image
inline constexpr int kIgnorableImages = 10;
inline constexpr int kMethodCount = 7;

/// The program-wide state that every command reads and writes in place. The
/// menus' checks and the two text fields stay the master copy of the user's
/// choices; a command copies them in here when it starts.
struct ProgramState {
    // The series.
    std::string firstFileName;
    std::string currentFileName;
    int16_t seriesBase = 0;
    int16_t imageCount = 0;
    float imageWidth = 0;
    float imageHeight = 0;

    // Method and block.
    int16_t increment = 0;
    std::array<Flag, kMethodCount> methodChecked{};
    /// Snapshot of the ignore entries for images 1 to 10, taken when a run starts.
    std::array<bool, kIgnorableImages> ignoredImage{};

    // Offsets: imageOffsets[axis][k], so that k runs fastest in memory.
    std::array<std::array<int16_t, kImageSlots>, 2> imageOffsets{};
    int16_t offsetMinX = 0;
    int16_t offsetMaxX = 0;
    int16_t offsetMinY = 0;
    int16_t offsetMaxY = 0;
    int16_t offsetBaseX = 0;
    int16_t offsetBaseY = 0;
    int16_t markGrabX = 0;
    int16_t markGrabY = 0;

    // Settings in force.
    float focusFactor = 0;
    float edgeFactor = 0;
    int16_t diffFactor = 0;
    float edgefactor2 = 0;
    int16_t autoSmooth = 0;
    int16_t showUsedWindow = 0;
    int16_t shortcutEnabled = 0;
    int16_t rightMouseEnabled = 0;

    // Run state.
    int16_t evaluationPass = 0;
    Flag montageFromProject = kFalse;
    Flag sizeCheckOff = kFalse;
    Flag firstLoadAfterStart = kFalse;
    Flag loadOnActivate = kFalse;

    // Results.
    std::string propertiesString;
    std::array<std::string, 11> methodProperties;
    float bestMeasure = 0;
    int16_t bestIncrement = 0;
    int16_t bestMethod = 0;
    std::string outputFileName;

    // Environment.
    std::string appPath;
    std::string commandLine;
    int16_t captionHeight = 0;
    int16_t dialogFrameHeight = 0;
    int16_t sizingFrameHeight = 0;
    int16_t menuHeight = 0;
    int16_t twipsPerPixel = 15;
    double scaleX = 1.0;
    double scaleY = 1.0;

    // Pixel buffers.
    PixelBuffers buffers;

    /// True when image k (1-based) is left out; images above 10 never are.
    bool isIgnored(int k) const { return k >= 1 && k <= kIgnorableImages && ignoredImage[k - 1]; }

    int16_t& offsetX(int k) { return imageOffsets[0][static_cast<std::size_t>(k)]; }
    int16_t& offsetY(int k) { return imageOffsets[1][static_cast<std::size_t>(k)]; }
    int16_t offsetX(int k) const { return imageOffsets[0][static_cast<std::size_t>(k)]; }
    int16_t offsetY(int k) const { return imageOffsets[1][static_cast<std::size_t>(k)]; }
};

/// Sets what a process start sets: the grab marker, the two start flags.
void initialiseProgramState(ProgramState& state);

}  // namespace lumiquilt
