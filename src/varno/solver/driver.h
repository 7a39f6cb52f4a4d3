#pragma once

namespace varno {

/// The program: settings, input, initialisation, integration and closing outputs. Returns the exit
/// status; errors end the process on the spot.
int RunProgram(int argc, char** argv);

}  // namespace varno
