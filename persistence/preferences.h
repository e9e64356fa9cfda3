#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/program_state.h"
#include "persistence/settings.h"

namespace lumiquilt {

/// The keys of the settings file, as they stand in it.
namespace prefkey {
inline constexpr std::string_view autoSmooth = "autoSmooth";
inline constexpr std::string_view edgeFactor = "edgeFactor";
inline constexpr std::string_view focusFactor = "focusFactor";
inline constexpr std::string_view diffFactor = "diffFactor";
inline constexpr std::string_view edgefactor2 = "edgefactor2";
inline constexpr std::string_view shortcut = "shortcut";
inline constexpr std::string_view rightmouse = "rightmouse";
inline constexpr std::string_view filename = "filename";
inline constexpr std::string_view increment = "Increment";
inline constexpr std::string_view montageMethod = "Montage method";
inline constexpr std::string_view originatingImage = "Originating image";
inline constexpr std::string_view loadImages = "Load images";
inline constexpr std::string_view targetColor = "Target color";
}  // namespace prefkey

/// Start-up's reads before any window exists, in this order: "autoSmooth",
/// "edgeFactor", "focusFactor", "diffFactor", "edgefactor2", "shortcut",
/// "rightmouse", each with its scale. Any "rightmouse" but 0 is held as 1. A value
/// that doesn't fit its setting's width reads as 0; the others still count.
void readSettingsBeforeWindows(ProgramState& state, const Settings& settings);

/// What start-up reads once its windows stand, in the order it reads them.
struct SettingsAfterWindows {
    /// "filename" as read, not yet trimmed: it counts when longer than two characters.
    std::string fileName;
    /// "Increment", trimmed.
    std::string incrementText;
    /// "Montage method"; a number beyond 16 bits reads as 0.
    int methodIndex = 0;
    /// "Originating image"; a number beyond 16 bits reads as 0.
    int16_t showUsedWindow = 0;
    RecentFiles recent;
    /// "Target color", through a 32-bit float.
    double targetColor = 0;
};

/// Reads "filename", "Increment", "Montage method", "Originating image", the twelve
/// "recent file " + i and "Target color", in this order.
SettingsAfterWindows readSettingsAfterWindows(const Settings& settings);

/// "Target color" as the marks take it: its leading number through a 32-bit float.
/// A number beyond a float's range reads as 0.
double readTargetColor(const Settings& settings);

/// The four smoothing factors, by the index of their dialog field `TextSmooth`(i):
/// 0 `edgeFactor`, 1 `focusFactor`, 2 `diffFactor`, 3 `edgefactor2`. The dialog's OK
/// writes them in this order.
inline constexpr int kSmoothFactorCount = 4;
inline constexpr std::array<std::string_view, kSmoothFactorCount> kSmoothFactorKeys = {
    prefkey::edgeFactor, prefkey::focusFactor, prefkey::diffFactor, prefkey::edgefactor2};

/// Sets factor i from the number stored under its key (edgeFactor = value / 100,
/// focusFactor = value / 100, diffFactor = value, edgefactor2 = value / 10).
/// Throws RuntimeError 6 when the result leaves its width.
void setFactorFromKey(ProgramState& state, int i, double keyValue);

/// The text written under factor i's key: the setting scaled back up, fraction cut
/// off. The product is taken at full precision, so a float a little under a whole
/// number writes one less: edgeFactor 0.29f writes "28".
std::string factorKeyText(const ProgramState& state, int i);

/// The text of field i from the setting in memory (100 - edgeFactor * 100,
/// focusFactor * 100, diffFactor / 100, 100 - edgefactor2 * 10), shown as a 32-bit
/// float shows it.
std::string factorFieldText(const ProgramState& state, int i);

/// Sets factor i from the text t of its field (1 - t / 100, t / 100, t * 100
/// rounded, 10 - t / 10). edgeFactor takes the text's leading number, so text that
/// is no number gives 1; the other three raise RuntimeError 13 for such text and
/// keep their value. Throws RuntimeError 6 when the result leaves its width.
void setFactorFromField(ProgramState& state, int i, std::string_view text);

/// The smoothing defaults: autoSmooth 1, focusFactor 0.1, edgeFactor 0.1,
/// diffFactor 100, edgefactor2 4.
void resetSmoothing(ProgramState& state);

/// A number as plain decimal text, no exponent and no leading blank: 20, 20.5, -3.
std::string plainDecimal(double value);

}  // namespace lumiquilt
