#pragma once

#include <string>
#include <vector>

#include "solve/command/console.h"
#include "solve/command/sweep_host.h"

namespace varno::solve {

/// The whole program: understands its arguments, without its name, and does what they ask for.
/// Returns the exit status.
int RunProgram(const std::vector<std::string>& arguments, const Console& console,
               const SweepHost& host = ThisProcess());

}  // namespace varno::solve
