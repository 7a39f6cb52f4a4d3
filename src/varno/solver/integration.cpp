#include "varno/solver/integration.h"

#include <cstddef>
#include <iostream>
#include <sstream>

#include "varno/core/global_data.h"
#include "varno/core/number_output.h"
#include "varno/output/dumps.h"
#include "varno/output/result_table.h"
#include "varno/solver/stiffness.h"
#include "varno/sys/messages.h"

namespace varno {

namespace {

constexpr int kTermDumpBit = 1;
constexpr int kDerivativeDumpBit = 2;

/// An order of at most this part of the term limit lets the step grow.
constexpr int kLowOrderPart = 12;

}  // namespace

Integration::Integration()
{
  ResetStiffnessMeasures();
}

void Integration::Run()
{
  Begin();
  while (Pass()) {
  }
}

void Integration::Begin()
{
  CutFirstStep();
  period.Arm();
  RequireProgress();
}

bool Integration::Pass()
{
  if (EvaluateEquations() == Attempt::kOrderExceeded) {
    HalveStep();
    return true;
  }
  PrintWhenDue();
  if (EndReached()) return false;
  WatchStiffness();
  if (!firstPass) EnlargeStepAtLowOrder();
  Advance();
  RequireReachableTmax();
  return true;
}

void Integration::CutFirstStep()
{
  if (mpf_cmp(Expr::Global->_STEP, Expr::Global->_TMAX) > 0)
    Expr::Global->SetStep(Expr::Global->_TMAX);
}

/// A negative step may go beyond a negative Tmax: halved, it may still end there.
void Integration::RequireProgress() const
{
  const int direction = Expr::Global->_STEP.Sign();
  const bool stuck = direction == 0 && Expr::Global->_TMAX.Sign() != 0;
  const bool leavesTmax = direction < 0 && Expr::Global->_TMAX.Sign() > 0;
  if (stuck || leavesTmax) RequireOtherEndThanTmax();
}

/// A negative step that starts below Tmax never comes back, halved or not.
void Integration::RequireReachableTmax() const
{
  if (Expr::Global->_STEP.Sign() >= 0 || mpf_cmp(Expr::Global->_T, Expr::Global->_TMAX) == 0)
    return;
  if (mpf_cmp(startTime, Expr::Global->_TMAX) < 0) RequireOtherEndThanTmax();
}

/// To be called when Tmax cannot be reached: without another end the run would go on for ever.
void Integration::RequireOtherEndThanTmax()
{
  if (Expr::Global->_STEADYSTOP != 0 || Expr::Global->_PERIODSAME > 0) return;
  std::ostringstream text;
  text << "A step of " << Expr::Global->_STEP << " never reaches Tmax= " << Expr::Global->_TMAX;
  Fail(text.str());
}

Integration::Attempt Integration::EvaluateEquations()
{
  Expr::Global->_WORK0 = 0;
  std::size_t steadyCount = 0;
  for (const auto& [name, variable] : Expr::Global->_EQUATIONS) {
    // An algebraic variable is computed anew: it may have been asked for earlier in the pass.
    if (variable->Type() != kDifferential) Expr::Global->_RESET_FLAG = true;
    variable->Value();
    if (variable->IsSteady()) ++steadyCount;
  }
  // A pass that is about to be rejected counts too.
  steadyPasses = steadyCount == Expr::Global->_EQUATIONS.size() ? steadyPasses + 1 : 0;

  const bool tooManyTerms =
      long{Expr::Global->_ZEROTERMS} + Expr::Global->_WORK0 > Expr::Global->_NTERMS;
  return tooManyTerms && !Expr::Global->_FIXEDSTEP ? Attempt::kOrderExceeded : Attempt::kAccepted;
}

/// Makes the next pass repeat the step with half its size, from the same start values.
void Integration::HalveStep()
{
  ++Expr::Global->_STEPNO;
  Expr::Global->_STEPNO_AUX = Expr::Global->_STEPNO;
  mpf_div(Expr::Global->_STEP, Expr::Global->_STEP, two);
  Expr::Global->SetStep(Expr::Global->_STEP);
  ReportStep("Max ORDER reached! Changing step to ");
  mpf_add(Expr::Global->_T, startTime, Expr::Global->_STEP);
  stepChanged = true;
}

void Integration::ReportStep(const char* event) const
{
  std::clog << tag::kSolver << event << Expr::Global->_STEP << "\tTime= " << startTime << std::endl;
}

void Integration::PrintWhenDue()
{
  const bool everyStep = Expr::Global->_PRINTEVERY.Sign() == 0;
  if (everyStep || firstPass || mpf_cmp(nextPrintTime, Expr::Global->_T) < 0) {
    Print();
  } else {
    ++rowsNotPrinted;
  }
}

void Integration::Print()
{
  if (rowsNotPrinted > 0) {
    std::clog << tag::kInfo << rowsNotPrinted << " results not printed\n" << std::flush;
    rowsNotPrinted = 0;
  }
  mpf_add(nextPrintTime, nextPrintTime, Expr::Global->_PRINTEVERY);
  if ((Expr::Global->_DUMPDY & kTermDumpBit) != 0) DumpTerms(startTime);
  if ((Expr::Global->_DUMPDY & kDerivativeDumpBit) != 0) DumpDerivatives(startTime);
  WriteRow(std::cout, Expr::Global->_PRINTONLYTMAX);
  RequireOutput();
}

bool Integration::EndReached()
{
  // On purpose a wait for the steady state goes on beyond Tmax and leaves periods alone.
  if (Expr::Global->_STEADYSTOP != 0) return steadyPasses == Expr::Global->_STEADYSTOP;
  return period.FindsPeriod() || mpf_cmp(Expr::Global->_T, Expr::Global->_TMAX) == 0;
}

void Integration::WatchStiffness()
{
  if (stiff && !stepChanged && !Expr::Global->_STIFFEVERYSTEP) return;
  stiff = TestStiffness();
  if (stiff) stepChanged = false;
}

void Integration::EnlargeStepAtLowOrder()
{
  if (Expr::Global->_WORK0 > Expr::Global->_NTERMS / kLowOrderPart) return;
  stepChanged = true;
  if (Expr::Global->_FIXEDSTEP) return;
  mpf_mul(Expr::Global->_STEP, Expr::Global->_STEP, stepGrowth);
  Expr::Global->SetStep(Expr::Global->_STEP);
  ReportStep("Step increased to ");
}

/// Moves on by a step, the last of which lands on Tmax.
void Integration::Advance()
{
  firstPass = false;
  mpf_set(startTime, Expr::Global->_T);
  mpf_add(Expr::Global->_T, Expr::Global->_T, Expr::Global->_STEP);
  if (mpf_cmp(Expr::Global->_T, Expr::Global->_TMAX) >= 0) {
    // h = h - t + Tmax
    mpf_sub(Expr::Global->_STEP, Expr::Global->_STEP, Expr::Global->_T);
    mpf_add(Expr::Global->_STEP, Expr::Global->_STEP, Expr::Global->_TMAX);
    Expr::Global->SetStep(Expr::Global->_STEP);
    mpf_set(Expr::Global->_T, Expr::Global->_TMAX);
    mpf_set_ui(Expr::Global->_PRINTEVERY, 0);  // the row at Tmax is printed
  }
  Expr::Global->_STEPNO_AUX = Expr::Global->_STEPNO;
  ++Expr::Global->_STEPNO;
}

}  // namespace varno
