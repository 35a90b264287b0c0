// The program's verbs. Each adds itself to the command line; `session` must outlive the program.
#pragma once

#include "tools/qonvert/session.h"

namespace qonvert {

void AddConvertVerb(CLI::App& program, Session& session);
void AddInfoVerb(CLI::App& program, Session& session);
void AddCompareVerb(CLI::App& program, Session& session);
void AddValidateVerb(CLI::App& program, Session& session);
void AddFormatsVerb(CLI::App& program, Session& session);

}  // namespace qonvert
