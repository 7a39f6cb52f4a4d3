#pragma once

namespace varno {

/// The exit statuses of the process; signals and assertions end it in their own way.
enum ExitStatus : int {
  kSuccess = 0,
  kFailure = 1,
  kSyntaxError = 3,
  /// What an operator's choice to leave at the signal prompt gives: exit(-1).
  kStoppedByOperator = -1,
};

}  // namespace varno
