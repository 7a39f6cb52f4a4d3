#pragma once

#include "arith/mpf.h"
#include "varno/solver/period.h"

namespace varno {

using arith::Mpf;

/// The integration from time 0 to `_TMAX` by Taylor series of variable order and step.
///
/// A pass sums every variable's series over the step h. The number of terms that counted is the
/// order: more than the limit allows, and the step is halved and tried again from the same values;
/// very few, and the step grows by the factor 1.2. Rows go to standard output, commentary to
/// standard error.
class Integration {
 public:
  Integration();

  /// Runs the loop to its end: Tmax, a steady state (`_STEADYSTOP`) or a period (`_PERIODSAME`).
  void Run();

  /// The parts of Run: what comes before the first pass, and a pass, which returns false at the
  /// end.
  void Begin();
  bool Pass();

 private:
  enum class Attempt { kAccepted, kOrderExceeded };

  void CutFirstStep();
  void RequireProgress() const;
  void RequireReachableTmax() const;
  static void RequireOtherEndThanTmax();
  Attempt EvaluateEquations();
  void HalveStep();
  void PrintWhenDue();
  void Print();
  bool EndReached();
  void WatchStiffness();
  void EnlargeStepAtLowOrder();
  void Advance();
  void ReportStep(const char* event) const;

  PeriodWatch period;
  Mpf startTime{0.0};  ///< time at the start of the step
  Mpf two{"2.0"};
  Mpf stepGrowth{"1.2"};
  Mpf nextPrintTime{"0"};
  int rowsNotPrinted = 0;
  int steadyPasses = 0;  ///< passes in a row in which every equation was steady
  bool firstPass = true;
  bool stepChanged = true;
  bool stiff = false;
};

}  // namespace varno
