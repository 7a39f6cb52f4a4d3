#include "varno/solver/integration.h"

#include <cstddef>
#include <iostream>
#include <sstream>

#include "varno/core/global_data.h"
#include "varno/format/number_format.h"
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

GlobalData& Global()
{
  return *Expr::Global;
}

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
  return true;
}

void Integration::CutFirstStep()
{
  if (mpf_cmp(Global()._STEP, Global()._TMAX) > 0) Global().SetStep(Global()._TMAX);
}

/// Without another end than Tmax, a step of 0 or away from Tmax would run for ever.
void Integration::RequireProgress() const
{
  const GlobalData& global = Global();
  if (global._STEADYSTOP != 0 || global._PERIODSAME > 0) return;
  const int direction = global._STEP.Sign();
  const bool stuck = direction == 0 && global._TMAX.Sign() != 0;
  const bool leavesTmax = direction < 0 && mpf_cmp(global._STEP, global._TMAX) != 0;
  if (!stuck && !leavesTmax) return;
  std::ostringstream text;
  text << "A step of " << global._STEP << " never reaches Tmax= " << global._TMAX;
  Fail(text.str());
}

Integration::Attempt Integration::EvaluateEquations()
{
  GlobalData& global = Global();
  global._WORK0 = 0;
  std::size_t steadyCount = 0;
  for (const auto& [name, variable] : global._EQUATIONS) {
    // An algebraic variable is computed anew: it may have been asked for earlier in the pass.
    if (variable->Type() != kDifferential) global._RESET_FLAG = true;
    variable->Value();
    if (variable->IsSteady()) ++steadyCount;
  }
  // A pass that is about to be rejected counts too.
  steadyPasses = steadyCount == global._EQUATIONS.size() ? steadyPasses + 1 : 0;

  const bool tooManyTerms = long{global._ZEROTERMS} + global._WORK0 > global._NTERMS;
  return tooManyTerms && !global._FIXEDSTEP ? Attempt::kOrderExceeded : Attempt::kAccepted;
}

/// Makes the next pass repeat the step with half its size, from the same start values.
void Integration::HalveStep()
{
  GlobalData& global = Global();
  ++global._STEPNO;
  global._STEPNO_AUX = global._STEPNO;
  mpf_div(global._STEP, global._STEP, two);
  global.SetStep(global._STEP);
  ReportStep("Max ORDER reached! Changing step to ");
  mpf_add(global._T, startTime, global._STEP);
  stepChanged = true;
}

void Integration::ReportStep(const char* event) const
{
  std::clog << tag::kSolver << event << Global()._STEP << "\tTime= " << startTime << std::endl;
}

void Integration::PrintWhenDue()
{
  const bool everyStep = Global()._PRINTEVERY.Sign() == 0;
  if (everyStep || firstPass || mpf_cmp(nextPrintTime, Global()._T) < 0) {
    Print();
  } else {
    ++rowsNotPrinted;
  }
}

void Integration::Print()
{
  const GlobalData& global = Global();
  if (rowsNotPrinted > 0) {
    std::clog << tag::kInfo << rowsNotPrinted << " results not printed\n" << std::flush;
    rowsNotPrinted = 0;
  }
  mpf_add(nextPrintTime, nextPrintTime, global._PRINTEVERY);
  if ((global._DUMPDY & kTermDumpBit) != 0) DumpTerms(startTime);
  if ((global._DUMPDY & kDerivativeDumpBit) != 0) DumpDerivatives(startTime);
  WriteRow(std::cout, global._PRINTONLYTMAX);
  RequireOutput();
}

bool Integration::EndReached()
{
  const GlobalData& global = Global();
  // On purpose a wait for the steady state goes on beyond Tmax and leaves periods alone.
  if (global._STEADYSTOP != 0) return steadyPasses == global._STEADYSTOP;
  return period.FindsPeriod() || mpf_cmp(global._T, global._TMAX) == 0;
}

void Integration::WatchStiffness()
{
  if (stiff && !stepChanged && !Global()._STIFFEVERYSTEP) return;
  stiff = TestStiffness();
  if (stiff) stepChanged = false;
}

void Integration::EnlargeStepAtLowOrder()
{
  GlobalData& global = Global();
  if (global._WORK0 > global._NTERMS / kLowOrderPart) return;
  stepChanged = true;
  if (global._FIXEDSTEP) return;
  mpf_mul(global._STEP, global._STEP, stepGrowth);
  global.SetStep(global._STEP);
  ReportStep("Step increased to ");
}

/// Moves on by a step, the last of which lands on Tmax.
void Integration::Advance()
{
  GlobalData& global = Global();
  firstPass = false;
  mpf_set(startTime, global._T);
  mpf_add(global._T, global._T, global._STEP);
  if (mpf_cmp(global._T, global._TMAX) >= 0) {
    // h = h - t + Tmax
    mpf_sub(global._STEP, global._STEP, global._T);
    mpf_add(global._STEP, global._STEP, global._TMAX);
    global.SetStep(global._STEP);
    mpf_set(global._T, global._TMAX);
    mpf_set_ui(global._PRINTEVERY, 0);  // the row at Tmax is printed
  }
  global._STEPNO_AUX = global._STEPNO;
  ++global._STEPNO;
}

}  // namespace varno
