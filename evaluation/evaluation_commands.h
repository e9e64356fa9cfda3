#pragma once

#include "evaluation/evaluation_passes.h"

namespace lumiquilt {

class FormMontage;

/// The menu commands that run Create Image again and again and rank the montages:
/// Compare All Exposure Methods and the two Evaluate Increments commands. The passes
/// themselves are the engine's; this is the window program's side of them.
class EvaluationCommands {
  public:
    explicit EvaluationCommands(FormMontage& form) : f(form) {}

    void mnuAllMethods_Click();
    void mnuEvaluate_Click();
    void mnuEvaluateAll_Click();

  private:
    using Passes = EvaluationResult (*)(ProgramState&, EvaluationFront&, const ScoreFn&);
    /// Runs the passes with the commands held off, as a Create Image run does.
    void run(Passes passes, const char* routine);

    FormMontage& f;
};

}  // namespace lumiquilt
