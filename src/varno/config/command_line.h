#pragma once

namespace varno {

/// What the command line leaves to the program besides the settings.
struct CommandLine {
  const char* inputFile = nullptr;  ///< null for standard input
  bool hasUnusedArguments = false;  ///< behind the input file
};

/// Reads the options into the record and settles the print interval. -h, -v and an unknown option
/// end the process.
CommandLine ReadCommandLine(int argc, char** argv);

}  // namespace varno
