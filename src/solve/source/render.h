#pragma once

#include <string>

#include "solve/source/diagnostics.h"

namespace varno::solve {

/// One remark as it is printed; see Render for all of them.
std::string Render(const Diagnostic& diagnostic, const Sources& sources);

}  // namespace varno::solve
