#pragma once

namespace varno {

/// The program: settings, input, initialisation, integration and closing outputs. Returns the exit
/// status; errors end the process on the spot.
int RunProgram(int argc, char** argv);

/// Converts every equation and sets its start value: the one that the input gives, otherwise 0.
void InitializeEquations();

}  // namespace varno
