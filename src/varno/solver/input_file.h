#pragma once

namespace varno {

/// Makes the scanner read a file. One that cannot be read ends the run with
/// "#(WARN) Error by opening input file: REASON" and status 1.
void OpenInput(const char* name);

}  // namespace varno
