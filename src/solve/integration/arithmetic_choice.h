#pragma once

namespace varno::solve {

/// Tells for which steps block arithmetic is worth a trial: not where it was not exact enough for
/// several steps before, so that these cost no more than with numbers of their own for all terms.
class ArithmeticChoice {
 public:
  /// Whether the step that comes next is worth it.
  bool IsWorthTrying() const { return stepsToSkip == 0; }
  /// Whether the latest trial failed.
  bool HasFailed() const { return failures > 0; }
  /// What became of it.
  void StepSkipped() { --stepsToSkip; }
  void StepTried(bool wasExact);

 private:
  int failures = 0;  // in a row
  int stepsToSkip = 0;
};

}  // namespace varno::solve
