// Signals that end the program between two frames, so that nothing half-written stays behind.
#pragma once

#include "tools/zorvan/result.h"

namespace zorvan::tool {

// From now on the first SIGINT, SIGTERM or SIGHUP is only noted; a second one ends the program at once.
// Those that are ignored stay so.
void NoteSignals();

// A failure once a signal was noted.
Status CheckInterruption();

// Dies of the noted signal, if there is one.
void DieOfNotedSignal();

}  // namespace zorvan::tool
