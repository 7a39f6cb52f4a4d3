// Enclosures hold the values at points, by MPFR.

#include "solve/enclosure/line_ranges.h"

#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "solve/enclosure/derivative_ranges.h"
#include "solve/evaluation/evaluator.h"
#include "solve/number/exponent_range.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::Power;

constexpr mpfr_prec_t kBits = 64;
constexpr mpfr_prec_t kReferenceBits = 300;

Range Between(double left, double right)
{
  Range range(kBits);
  mpfi_interv_d(range, left, right);
  return range;
}

Real Number(double value)
{
  Real number(kReferenceBits);
  mpfr_set_d(number, value, MPFR_RNDN);
  return number;
}

bool Holds(const Range& range, const Real& value)
{
  return mpfr_lessequal_p(range.Left(), value) != 0 && mpfr_lessequal_p(value, range.Right()) != 0;
}

std::string Text(const Range& range)
{
  return "[" + std::to_string(mpfr_get_d(range.Left(), MPFR_RNDN)) + ", " +
         std::to_string(mpfr_get_d(range.Right(), MPFR_RNDN)) + "]";
}

/// x' = an expression of t and x.
struct Case {
  const char* name;
  Expression (*rightHandSide)(Equations& m, Expression x);
  double low, high;  // of x
};

const Case kCases[] = {
    {"sum", [](Equations& m, Expression x) { return 3 * x - m.Time() + Rational(1, 3); }, -2, 2},
    {"product", [](Equations& m, Expression x) { return x * m.Time(); }, -2, 2},
    {"square", [](Equations&, Expression x) { return x * x; }, -2, 2},
    {"quotient", [](Equations& m, Expression x) { return m.Time() / x; }, 0.1, 3},
    {"root", [](Equations&, Expression x) { return Function(Operation::kSqrt, x); }, 0.1, 3},
    {"cbrt", [](Equations&, Expression x) { return Function(Operation::kCbrt, x); }, -3, -0.1},
    {"power", [](Equations&, Expression x) { return Power(x, Rational(-7, 3)); }, 0.1, 3},
    {"pi", [](Equations& m, Expression x) { return x * m.Pi(); }, -2, 2},
    {"atan2",
     [](Equations& m, Expression x) { return Function(Operation::kAtan2, x, m.Time() + 2); }, -2,
     2},
};

/// The functions of one argument, each where it is defined.
struct FunctionCase {
  Operation function;
  double low, high;
};

const FunctionCase kFunctions[] = {
    {Operation::kExp, -5, 5},      {Operation::kLn, 0.1, 5},       {Operation::kSin, -9, 9},
    {Operation::kCos, -9, 9},      {Operation::kTan, -1.5, 1.5},   {Operation::kCot, 0.1, 3},
    {Operation::kAsin, -0.9, 0.9}, {Operation::kAcos, -0.9, 0.9},  {Operation::kAtan, -5, 5},
    {Operation::kAcot, 0.1, 5},    {Operation::kSinh, -5, 5},      {Operation::kCosh, -5, 5},
    {Operation::kTanh, -5, 5},     {Operation::kCoth, -5, -0.1},   {Operation::kAsinh, -5, 5},
    {Operation::kAcosh, 1.1, 5},   {Operation::kAtanh, -0.9, 0.9}, {Operation::kAcoth, -5, -1.1},
    {Operation::kErf, -3, 3},
};

Model With(const Case& problem)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, problem.rightHandSide(m, x));
  return m.Finished();
}

Model With(Operation function)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, Function(function, x));
  return m.Finished();
}

/// Compares ranges over random boxes with values, and derivatives with quotients of differences, at
/// random points in them.
void ExpectEnclosed(const std::string& name, const Model& model, double low, double high)
{
  const Tape tape = Compile(model);
  const LineRanges lines(tape, kBits);
  const HeldLines none;
  Evaluator evaluator(model.graph, {model.states[0].rightHandSide}, kReferenceBits);
  const auto value = [&](const Real& time, const Real& x) {
    evaluator.Evaluate(time, std::vector<Real>{x});
    return evaluator[0];
  };

  Real roundingOfSlopes(2);
  mpfr_set_ui_2exp(roundingOfSlopes, 1, -200, MPFR_RNDN);
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(low, high), part(0, 1);
  for (int i = 0; i < 50; ++i) {
    double left = place(random), right = place(random);
    if (left > right) std::swap(left, right);
    if (i % 2 != 0) right = left + (right - left) / 1000;
    const auto ranges = lines.Over({Between(0, 1), {Between(left, right)}}, none);
    ASSERT_TRUE(ranges) << name << " between " << left << " and " << right;
    const LineId line = tape.rightHandSides[0];
    Range derivative = DerivativeRanges(tape, lines, *ranges, none, line)[0];
    mpfi_increase(derivative, roundingOfSlopes);
    for (int j = 0; j < 20; ++j) {
      const Real time = Number(part(random)), x = Number(left + (right - left) * part(random));
      EXPECT_TRUE(Holds((*ranges)[line], value(time, x)))
          << name << " between " << left << " and " << right << ": " << Text((*ranges)[line]);
      // (f(y) - f(x)) / (y - x) is a value of f' between both.
      const Real y = Number(left + (right - left) * part(random));
      if (mpfr_equal_p(x, y) != 0) continue;
      Real slope = value(time, y), distance(kReferenceBits);
      mpfr_sub(slope, slope, value(time, x), MPFR_RNDN);
      mpfr_sub(distance, y, x, MPFR_RNDN);
      mpfr_div(slope, slope, distance, MPFR_RNDN);
      EXPECT_TRUE(Holds(derivative, slope))
          << name << "' between " << left << " and " << right << ": " << Text(derivative);
    }
  }
}

TEST(LineRanges, HoldValuesAndSlopes)
{
  for (const Case& problem : kCases)
    ExpectEnclosed(problem.name, With(problem), problem.low, problem.high);
}

TEST(LineRanges, HoldValuesAndSlopesOfFunctions)
{
  for (const FunctionCase& problem : kFunctions) {
    const std::string name(FunctionName(problem.function));
    ExpectEnclosed(name, With(problem.function), problem.low, problem.high);
  }
}

// Where a function has no value somewhere in the box, or jumps, there is no range.
TEST(LineRanges, EndAtTheDomain)
{
  const auto hasRange = [](const Model& model, double low, double high) {
    const Tape tape = Compile(model);
    const LineRanges lines(tape, kBits);
    return lines.Over({Between(0, 1), {Between(low, high)}}, {}).has_value();
  };
  for (const Operation function :
       {Operation::kSqrt, Operation::kCbrt, Operation::kLn, Operation::kCot, Operation::kAcot,
        Operation::kCoth, Operation::kAcosh, Operation::kAcoth})
    EXPECT_FALSE(hasRange(With(function), -1e-10, 1e-10)) << FunctionName(function);
  EXPECT_FALSE(hasRange(With(Operation::kTan), 1.5, 1.6));
  EXPECT_FALSE(hasRange(With(Operation::kAsin), 0.5, 1));
  EXPECT_FALSE(hasRange(With(Operation::kAcos), -1, 0.5));
  EXPECT_FALSE(hasRange(With(Operation::kAtanh), 0.5, 1));
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, Function(Operation::kAtan2, x, m.Time() - 2));
  EXPECT_FALSE(hasRange(m.Finished(), -0.1, 0.1));
  EXPECT_TRUE(hasRange(m.Finished(), 0.1, 0.2));
}

// exp(-10^12) to exp(-10^6): beyond any double, and outwards of both ends.
TEST(LineRanges, KeepTheirExponents)
{
  const Tape tape = Compile(With(Operation::kExp));
  const LineRanges lines(tape, kBits);
  const auto ranges = lines.Over({Between(0, 1), {Between(-1e6, -1e6)}}, {});
  Real exact(kReferenceBits);
  mpfr_set_d(exact, -1e6, MPFR_RNDN);
  mpfr_exp(exact, exact, MPFR_RNDN);
  const Range& range = (*ranges)[tape.rightHandSides[0]];
  EXPECT_TRUE(Holds(range, exact));
  EXPECT_TRUE(range.IsPositive());
  EXPECT_NE(0, mpfr_less_p(range.Left(), range.Right()));
}

// An angle that ends very near to 0 takes no more digits of pi than others.
TEST(LineRanges, OfAnglesNearZero)
{
  const ScopedExponentRange exponents;
  Real above(kBits), below(kBits), half(kBits);
  mpfr_nextabove(above);
  mpfr_nextbelow(below);
  mpfr_set_d(half, 0.5, MPFR_RNDN);
  for (const Operation function : {Operation::kSin, Operation::kCos, Operation::kTan}) {
    const Model model = With(function);
    const Tape tape = Compile(model);
    const LineRanges lines(tape, kBits);
    Evaluator evaluator(model.graph, {model.states[0].rightHandSide}, kReferenceBits);
    const auto expectHeld = [&](const Real& left, const Real& right) {
      Range angle(kBits);
      mpfi_interv_fr(angle, left, right);
      const auto ranges = lines.Over({Between(0, 1), {angle}}, {});
      ASSERT_TRUE(ranges);
      for (const Real& x : {left, right}) {
        evaluator.Evaluate(Number(0), std::vector<Real>{x});
        EXPECT_TRUE(Holds((*ranges)[tape.rightHandSides[0]], evaluator[0]))
            << FunctionName(function);
      }
      const Range& range = (*ranges)[tape.rightHandSides[0]];
      Real width(kBits);
      mpfr_sub(width, range.Right(), range.Left(), MPFR_RNDU);
      EXPECT_LT(width.ToDouble(), 0.55) << FunctionName(function);
    };
    expectHeld(below, half);
    expectHeld(above, half);
    expectHeld(below, above);
  }
}

// Of angles that would take a hundred thousand digits of pi to reduce nothing is said.
TEST(LineRanges, OfAnglesBeyondManyDigitsOfPi)
{
  const ScopedExponentRange exponents;
  Real huge(kBits);
  mpfr_set_ui_2exp(huge, 1, 300'000, MPFR_RNDN);
  Range angle(kBits);
  mpfi_set_fr(angle, huge);
  for (const Operation function :
       {Operation::kSin, Operation::kCos, Operation::kTan, Operation::kCot}) {
    const Tape tape = Compile(With(function));
    const LineRanges lines(tape, kBits);
    EXPECT_FALSE(lines.Over({Between(0, 1), {angle}}, {})) << FunctionName(function);
  }
}

// What uses a held line sees the constant and its values.
TEST(LineRanges, WidenHeldLines)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, Function(Operation::kExp, x) + 5);
  const Tape tape = Compile(m.Finished());
  const LineRanges lines(tape, kBits);
  for (const double constant : {0.0, 2.0, -3.0}) {
    HeldLines held;
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      if (tape.lines[id].kind == LineKind::kIntegralOfProduct) held.emplace(id, Number(constant));
    }
    const auto ranges = lines.Over({Between(0, 1), {Between(1, 2)}}, held);
    const Range& range = (*ranges)[tape.rightHandSides[0]];
    EXPECT_TRUE(Holds(range, Number(5 + constant)));
    EXPECT_TRUE(Holds(range, Number(5 + 7)));
    EXPECT_FALSE(Holds(range, Number(13)));
    EXPECT_FALSE(Holds(range, Number(1.9)));
    // They are independent variables: the derivative by the state does not go through them.
    const auto derivatives = DerivativeRanges(tape, lines, *ranges, held, tape.rightHandSides[0]);
    EXPECT_TRUE(derivatives[0].IsZero());
  }
}

}  // namespace
}  // namespace varno::solve
