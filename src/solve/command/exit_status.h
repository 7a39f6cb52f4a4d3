#pragma once

namespace varno::solve {

/// The exit statuses of varno-solve. A closed pipe ends it by SIGPIPE.
enum ExitStatus : int {
  kSuccess = 0,       ///< all rows printed, all right
  kFailure = 1,       ///< wrong command, file, language or value
  kEndedEarly = 2,    ///< the rows printed so far are right
  kOutputLost = 3,    ///< output could not be written
  kRowWasWrong = 4,   ///< a better attempt found a row wrong that was already printed
  kSignalBase = 128,  ///< plus the number of the signal that ended the run: 130 after Ctrl-C
};

}  // namespace varno::solve
