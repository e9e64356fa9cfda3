#include "evaluation/evaluation_passes.h"

#include "core/numbers.h"
#include "engine/evaluate_image.h"
#include "engine/measures.h"

namespace lumiquilt {

float seamScore(const ProgramState& state, int16_t blockSize) {
    return evaluateImage(state.buffers, state.imageWidth, state.imageHeight, blockSize);
}

int16_t incrementUpperBound(float imageWidth) {
    if (imageWidth >= 1200.0f) {
        return 200;
    }
    return toInt16(static_cast<double>(imageWidth) / 6.0);
}

std::string compareMessage(int bestMethod) {
    return "I think the best Montage Method is '" +
           std::string(kMethodCaptions[static_cast<std::size_t>(bestMethod)]) + "'.";
}

std::string evaluateMessage(int bestMethod, int16_t bestIncrement) {
    return "I think the best increment for this '" +
           std::string(kMethodCaptions[static_cast<std::size_t>(bestMethod)]) +
           "' Montage Method is " + numberToText(static_cast<long long>(bestIncrement)) + ".";
}

std::string evaluateAllMessage(int bestMethod, int16_t bestIncrement) {
    return "I think the best Montage Method is  '" +
           std::string(kMethodCaptions[static_cast<std::size_t>(bestMethod)]) +
           "'  used with an increment of " + numberToText(static_cast<long long>(bestIncrement)) +
           ".";
}

namespace {

// A method index the captions can name; bestMethod is only ever set to one, but it
// lives in the shared state.
int namedMethod(int16_t method) {
    return method >= 0 && method < kMethodCount ? method : 0;
}

// One command of the family: what the user had chosen on entry, and the way back to
// it when a pass stops.
class Command {
  public:
    Command(ProgramState& state, EvaluationFront& front, const ScoreFn& score)
        : s(state), f(front), m_score(score) {
        m_userMethod = f.tickedMethod();
        m_userIncrement = f.road().choices().incrementText;
    }

    // Runs a command body; a failure of a front end's step (the window closing, above
    // all) leaves the shared flags as a finished command does.
    template <typename Body>
    EvaluationResult run(Body body) {
        try {
            body();
        } catch (...) {
            s.evaluationPass = 0;
            s.sizeCheckOff = kFalse;
            throw;
        }
        return m_result;
    }

    // Compare All Exposure Methods.
    void compare() {
        s.bestMeasure = kBestMeasureStart;
        const int user = m_userMethod < 0 ? 0 : m_userMethod;
        f.tickOnly(-1);
        for (int pass = 1; pass <= kMethodCount; ++pass) {
            const int method = kMethodCount - pass;
            const int slot = pass - 1;
            s.evaluationPass = static_cast<int16_t>(pass);
            f.tickOnly(method);
            const RunEnd end = createImage(s, f.road());
            f.setBusy(true);
            f.tickOnly(-1);
            if (end != RunEnd::completed) {
                // Nothing new stands in slot 100: no window, no score, no message.
                f.setBusy(false);
                m_userMethod = user;
                stop();
                return;
            }
            f.keepMethodResult(slot, method);
            s.methodProperties[static_cast<std::size_t>(slot)] = s.propertiesString;
            f.raisePreview();
            f.yieldEvents();
            scorePass(method, kCompareBlockSize,
                      [&] { s.bestMethod = static_cast<int16_t>(method); });
        }
        f.setBusy(false);
        const int best = namedMethod(s.bestMethod);
        f.showComparisonBest(kMethodCount - 1 - best);
        f.announce(compareMessage(best), kCompareTitle);
        f.raiseMontage();
        f.tickOnly(user);
        s.evaluationPass = 0;
        f.road().setFileNameText(s.firstFileName);
        f.commandClosed();
    }

    // Evaluate Increments, started by the user.
    void evaluate() {
        if (!incrementLoop(true)) {
            stop();
            return;
        }
        f.commandClosed();
    }

    // Evaluate Increments and all Exposure Methods.
    void evaluateAll() {
        if (!f.confirm(kEvaluateAllQuestion, kEvaluateAllQuestionTitle)) {
            m_result.end = EvaluationEnd::cancelled;
            return;
        }
        for (int pass = 1; pass <= kMethodCount; ++pass) {
            s.evaluationPass = static_cast<int16_t>(pass);
            f.tickOnly(kMethodCount - pass);
            if (!incrementLoop(false)) {
                stop();
                return;
            }
        }
        s.evaluationPass = 0;
        f.road().setIncrementText(std::to_string(s.bestIncrement));
        m_wroteIncrement = true;
        f.tickOnly(namedMethod(s.bestMethod));
        if (createImage(s, f.road()) != RunEnd::completed) {
            stop();
            return;
        }
        f.yieldEvents();
        f.announce(evaluateAllMessage(namedMethod(s.bestMethod), s.bestIncrement), kEvaluateTitle);
        f.commandClosed();
    }

  private:
    // The increments of one method; false when a run stopped. The closing run and
    // message belong to a command the user started alone.
    bool incrementLoop(bool userStarted) {
        if (s.evaluationPass <= 1) {
            s.bestMeasure = kBestMeasureStart;
            s.bestIncrement = 0;
        }
        const int16_t bound = incrementUpperBound(s.imageWidth);
        for (int16_t i = 10; i <= bound; i = static_cast<int16_t>(i + 10)) {
            if (i > 10 && s.evaluationPass == 0) {
                s.evaluationPass = 6;  // the later increments reuse the loaded pictures
            }
            f.road().setIncrementText(std::to_string(i));
            m_wroteIncrement = true;
            f.yieldEvents();
            s.sizeCheckOff = kTrue;
            const RunEnd end = createImage(s, f.road());
            s.sizeCheckOff = kFalse;
            if (end != RunEnd::completed) {
                return false;
            }
            f.yieldEvents();
            const int method = f.tickedMethod();
            scorePass(method < 0 ? 0 : method, i, [&] {
                s.bestIncrement = i;
                s.bestMethod = static_cast<int16_t>(method < 0 ? 0 : method);
            });
        }
        if (userStarted && s.evaluationPass == 6) {
            f.road().setIncrementText(std::to_string(s.bestIncrement));
            if (createImage(s, f.road()) != RunEnd::completed) {
                return false;
            }
            f.yieldEvents();
            s.evaluationPass = 0;
            f.announce(evaluateMessage(namedMethod(s.bestMethod), s.bestIncrement), kEvaluateTitle);
        }
        return true;
    }

    // Scores slot 100; a strictly lower score is the new best, so on a tie the
    // earlier result stands.
    template <typename OnBest>
    void scorePass(int method, int16_t blockSize, OnBest onBest) {
        const float value = m_score(s, blockSize);
        const bool best = value < s.bestMeasure;
        if (best) {
            s.bestMeasure = value;
            onBest();
        }
        const PassScore scored{method, blockSize, value};
        m_result.scores.push_back(scored);
        f.passScored(scored, best);
    }

    // A pass ended without a montage: the user's choices come back, nothing is named.
    void stop() {
        m_result.end = EvaluationEnd::stopped;
        s.sizeCheckOff = kFalse;
        s.evaluationPass = 0;
        f.tickOnly(m_userMethod);
        if (m_wroteIncrement) {
            f.road().setIncrementText(m_userIncrement);
        }
        f.road().setFileNameText(s.firstFileName);
        f.commandClosed();
    }

    ProgramState& s;
    EvaluationFront& f;
    const ScoreFn& m_score;
    int m_userMethod = -1;
    std::string m_userIncrement;
    bool m_wroteIncrement = false;
    EvaluationResult m_result;
};

}  // namespace

EvaluationResult compareAllMethods(ProgramState& state, EvaluationFront& front,
                                   const ScoreFn& score) {
    Command command(state, front, score);
    return command.run([&] { command.compare(); });
}

EvaluationResult evaluateIncrements(ProgramState& state, EvaluationFront& front,
                                    const ScoreFn& score) {
    Command command(state, front, score);
    return command.run([&] { command.evaluate(); });
}

EvaluationResult evaluateIncrementsAllMethods(ProgramState& state, EvaluationFront& front,
                                              const ScoreFn& score) {
    Command command(state, front, score);
    return command.run([&] { command.evaluateAll(); });
}

}  // namespace lumiquilt
