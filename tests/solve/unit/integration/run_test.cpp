#include "solve/integration/run.h"

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

/// x' = x from 1
Tape Growth()
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x);
  return Compile(m.Finished());
}

std::vector<Real> One(mpfr_prec_t bits)
{
  Real one(bits);
  mpfr_set_ui(one, 1, MPFR_RNDN);
  return {one};
}

TEST(Run, StepsHaveFewBits)
{
  const Tape tape = Growth();
  const RunSettings settings = SettingsFor(20, 20);
  solve::Run run(tape, settings, Moment(Rational(0)), One(settings.bits), Moment(Rational(100)));
  for (int i = 0; i < 20; ++i) {
    run.Step();
    const Rational length = (run.End() - run.Begin()).RationalPart();
    EXPECT_LE(mpz_sizeinbase(length.get_num_mpz_t(), 2), 12U);
  }
}

TEST(Run, GivesStatesWithinTheLatestStep)
{
  for (const bool backwards : {false, true}) {
    const Tape tape = Growth();
    const RunSettings settings = SettingsFor(20, 20);
    const Moment reach(backwards ? -10 : 10);
    solve::Run run(tape, settings, Moment(Rational(0)), One(settings.bits), reach);
    EXPECT_TRUE(run.IsBehind(reach));
    while (run.Steps() < 3) run.Step();
    for (const Rational& part : {Rational(0), Rational(1, 3), Rational(1)}) {
      const Moment time = run.Begin() + (run.End() - run.Begin()) * part;
      EXPECT_FALSE(run.IsBehind(time));
      Real expected(300);
      time.Evaluate(expected);
      mpfr_exp(expected, expected, MPFR_RNDN);
      EXPECT_TRUE(support::HasDigits(20, run.StatesAt(time)[0], expected)) << part;
    }
  }
}

// Near an equilibrium little is left of the derivative 2 - x. The bits that it lost are made up
// for, at most as many as the run has, and no more where nothing cancels.
TEST(Run, TakesMoreBitsWhereLinesCancel)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, 2 - x);
  const Tape relaxing = Compile(m.Finished()), growing = Growth();
  const RunSettings settings = SettingsFor(20, 20);
  const Moment reach(200);
  solve::Run run(relaxing, settings, Moment(Rational(0)), One(settings.bits), reach);
  while (run.IsBehind(Moment(5))) run.Step();
  EXPECT_EQ(settings.bits, run.Bits());
  while (run.IsBehind(Moment(50))) run.Step();
  EXPECT_GT(run.Bits(), settings.bits + 20);
  Real expected(300);
  mpfr_set_si(expected, -50, MPFR_RNDN);
  mpfr_exp(expected, expected, MPFR_RNDN);
  mpfr_ui_sub(expected, 2, expected, MPFR_RNDN);
  EXPECT_TRUE(support::HasDigits(20, run.StatesAt(Moment(50))[0], expected));
  while (run.IsBehind(reach)) run.Step();
  EXPECT_LE(run.Bits(), 2 * settings.bits + 128);

  solve::Run other(growing, settings, Moment(Rational(0)), One(settings.bits), reach);
  while (other.IsBehind(reach)) other.Step();
  EXPECT_EQ(settings.bits, other.Bits());
}

// Where terms fall from the start, that has the raised order, too.
TEST(Run, RaisesTheOrderOfTheFirstStep)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x * x);
  const Tape tape = Compile(m.Finished());
  const RunSettings settings = SettingsFor(40, 40);
  solve::Run run(tape, settings, Moment(Rational(0)), One(settings.bits), Moment(Rational(1, 2)));
  run.Step();
  EXPECT_EQ(settings.raisedOrder, run.Order());
}

// The series of a step and the start of the next one are the same solution.
TEST(Run, StepsJoin)
{
  const Tape tape = Growth();
  const RunSettings settings = SettingsFor(20, 20);
  solve::Run run(tape, settings, Moment(Rational(0)), One(settings.bits), Moment(Rational(10)));
  run.Step();
  const Real atEnd = run.StatesAt(run.End())[0];
  run.Step();
  EXPECT_TRUE(support::HasDigits(25, run.StatesAt(run.Begin())[0], atEnd));
}

}  // namespace
}  // namespace varno::solve
