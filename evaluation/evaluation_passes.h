#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/program_state.h"
#include "engine/create_image.h"

namespace lumiquilt {

/// Where the lowest score starts; every real score lies far below it.
inline constexpr float kBestMeasureStart = 32000.0f;
/// Compare All Exposure Methods scores every montage on this grid, whatever the
/// increment it was made with.
inline constexpr int16_t kCompareBlockSize = 10;

inline constexpr const char* kCompareTitle = "You can also compare the images visually";
inline constexpr const char* kEvaluateTitle = "well done!";
inline constexpr const char* kEvaluateAllQuestion =
    "I am about to examine all the Montage creation Methods, with a range of increments, to "
    "determine which I think looks best.   This may take a considerable time.   Do you want to "
    "continue? ";
inline constexpr const char* kEvaluateAllQuestionTitle =
    "It's all automatic, but the time depends on your computer speed.";

/// One scored montage: the method ticked for its run, its increment, its score.
struct PassScore {
    int method = 0;
    int16_t increment = 0;
    float score = 0.0f;
};

/// What only a front end can do for the commands that run Create Image again and
/// again: the ticks of the method menu, the result windows, messages, events. Every
/// pass runs through road(), the front of Create Image itself. The defaults do
/// nothing, which is what a front end without windows wants.
class EvaluationFront {
  public:
    virtual ~EvaluationFront() = default;

    /// The front that each pass's Create Image runs through.
    virtual CreateImageFront& road() = 0;
    /// The first ticked Exposure Method, 0 to 6, or -1 when none is ticked.
    virtual int tickedMethod() = 0;
    /// Clears all seven ticks, then ticks `method`; -1 leaves none ticked.
    virtual void tickOnly(int method) = 0;
    /// A question with OK and Cancel; true for OK.
    virtual bool confirm(const std::string& text, const std::string& title) = 0;

    /// A command's closing message, with OK and the exclamation icon.
    virtual void announce(const std::string& /*text*/, const std::string& /*title*/) {}
    /// The hourglass between the passes of a comparison.
    virtual void setBusy(bool /*busy*/) {}
    /// Lets the window queue run once.
    virtual void yieldEvents() {}
    /// A comparison pass has made the montage of `method`: keep it in the result
    /// windows of `slot`.
    virtual void keepMethodResult(int /*slot*/, int /*method*/) {}
    /// Brings the preview window to the front.
    virtual void raisePreview() {}
    /// A montage has been scored; newBest when it beat every earlier one.
    virtual void passScored(const PassScore& /*score*/, bool /*newBest*/) {}
    /// The comparison's best result, kept in `slot`, becomes the main montage.
    virtual void showComparisonBest(int /*slot*/) {}
    /// The main montage window to the front.
    virtual void raiseMontage() {}
    /// The last step of every command: the Window menu rebuilt, the main window
    /// repainted.
    virtual void commandClosed() {}
};

/// The seam score of the montage a pass left, at blockSize.
using ScoreFn = std::function<float(const ProgramState& state, int16_t blockSize)>;
/// evaluateImage on slot 100 within imageWidth by imageHeight.
float seamScore(const ProgramState& state, int16_t blockSize);

enum class EvaluationEnd {
    completed,
    cancelled,  ///< the question was answered with Cancel; nothing changed
    stopped,    ///< a pass's Create Image did not complete; the command stopped after it
};

struct EvaluationResult {
    EvaluationEnd end = EvaluationEnd::completed;
    /// Every montage scored, in the order tried.
    std::vector<PassScore> scores;
};

/// Compare All Exposure Methods: one Create Image per method, in the order 6 down to
/// 0 (method m in slot 6 - m), each scored at kCompareBlockSize; the strictly lowest
/// score names bestMethod, so on a tie the method tried first stays. The user's tick
/// comes back at the end and firstFileName goes back into the file name.
///
/// When a pass's run does not complete, the command stops after it: that pass is
/// neither kept nor scored, nothing more is shown, the user's tick comes back,
/// evaluationPass is 0 and firstFileName goes back into the file name.
EvaluationResult compareAllMethods(ProgramState& state, EvaluationFront& front,
                                   const ScoreFn& score = seamScore);

/// Evaluate Increments: Create Image with increments 10, 20, ... up to the bound
/// from imageWidth, each scored at its own increment; the strictly lowest keeps
/// bestIncrement. From two increments on, the best is made once more and named.
/// A stop is as for the comparison; the increment text comes back as well.
EvaluationResult evaluateIncrements(ProgramState& state, EvaluationFront& front,
                                    const ScoreFn& score = seamScore);

/// Evaluate Increments and all Exposure Methods: after the question, the increments
/// of every method in the order 6 down to 0, then the best pair made and named.
EvaluationResult evaluateIncrementsAllMethods(ProgramState& state, EvaluationFront& front,
                                              const ScoreFn& score = seamScore);

/// The largest increment tried: 200 from a width of 1200 on, otherwise width / 6
/// rounded half to even.
int16_t incrementUpperBound(float imageWidth);

/// The closing messages.
std::string compareMessage(int bestMethod);
std::string evaluateMessage(int bestMethod, int16_t bestIncrement);
std::string evaluateAllMessage(int bestMethod, int16_t bestIncrement);

}  // namespace lumiquilt
