#pragma once

namespace varno {

/// Reads the options into the record, opens the input file for the scanner and settles the print
/// interval. Returns 0; -h, -v, an unknown option and an unreadable input file end the process.
int ReadCommandLine(int argc, char** argv);

}  // namespace varno
