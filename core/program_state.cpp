#include "core/program_state.h"

namespace lumiquilt {

void initialiseProgramState(ProgramState& state) {
    state.firstLoadAfterStart = kTrue;
    state.markGrabX = -999;
    state.loadOnActivate = kTrue;
    state.montageFromProject = kFalse;
    state.sizeCheckOff = kFalse;
}

}  // namespace lumiquilt
