// The terms of block fixed-point arithmetic against those of MPFR with many more bits.

#include "solve/series/block_series.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "solve/evaluation/evaluator.h"
#include "solve/fixed/long.h"
#include "solve/fixed/narrow.h"
#include "solve/fixed/wide.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::Power;
using enum Operation;

constexpr mpfr_prec_t kReferenceBits = 2000;

/// A problem with every kind of line: all functions of an angle and of a radius.
Tape EveryLine()
{
  Equations m;
  const Expression x = m.Variable("x", Rational(3, 5)), y = m.Variable("y", Rational(-7, 3)),
                   z = m.Variable("z", Rational(1, 1024)), t = m.Time();
  const Expression u = 2 + x * x + z, w = y / u;
  m.SetDerivative(x, Function(kSin, y) * Function(kSqrt, u) + Rational(1, 3) * t);
  m.SetDerivative(y, Function(kExp, x) - 5 * w + Power(u, Rational(-3, 2)) + 100000 * Power(x, 3) -
                         100000 * x * x * x);
  m.SetDerivative(z, Function(kLn, u) * Function(kAtan2, x + 2, u) + Function(kTanh, w) +
                         Function(kErf, x) + Function(kAtan, t) - z);
  return Compile(m.Finished());
}

std::vector<Real> States(const Tape& tape, mpfr_prec_t bits)
{
  std::vector<Real> states;
  for (std::size_t i = 0; i < tape.rightHandSides.size(); ++i) {
    mpfr_set_d(states.emplace_back(bits), 0.625 - static_cast<double>(i), MPFR_RNDN);
  }
  return states;
}

/// log2 of the largest error of a term beside the largest term of its line, over all lines.
double LargestError(const Tape& tape, const Series& series, int order, const Series& exact)
{
  double worst = -INFINITY;
  Real term(kReferenceBits), expected(kReferenceBits);
  for (LineId line = 0; line < tape.lines.size(); ++line) {
    double largest = -INFINITY, error = -INFINITY;
    for (int k = 0; k <= order; ++k) {
      series.Term(line, k, term);
      exact.Term(line, k, expected);
      largest = std::max(largest, support::Log2(expected));
      mpfr_sub(term, term, expected, MPFR_RNDN);
      error = std::max(error, support::Log2(term));
    }
    if (error > -INFINITY) worst = std::max(worst, error - largest);
  }
  return worst;
}

struct Format {
  const char* name;
  mpfr_prec_t bits;
  std::unique_ptr<Series> (*make)(const Tape& tape, mpfr_prec_t bits);
};

template <class Arithmetic>
std::unique_ptr<Series> Make(const Tape& tape, mpfr_prec_t bits)
{
  return std::make_unique<BlockSeries<Arithmetic>>(tape, bits, 20, false);
}

class BlockSeriesOfFormat : public testing::TestWithParam<Format> {};

TEST_P(BlockSeriesOfFormat, HasTheTermsOfEveryLine)
{
  const Format& format = GetParam();
  const Tape tape = EveryLine();
  const auto series = format.make(tape, format.bits);
  MpfrSeries exact(tape, kReferenceBits, 20, false);
  Real time(20);
  mpfr_set_d(time, 0.25, MPFR_RNDN);
  constexpr int kOrder = 40;
  for (const bool backwards : {false, true}) {
    series->Begin(time, States(tape, 20), backwards, -5);
    exact.Begin(time, States(tape, 20), backwards, -5);
    series->ExtendTo(kOrder);
    exact.ExtendTo(kOrder);
    ASSERT_EQ(0, series->MissingBits(0, {static_cast<double>(format.bits)}));
    ASSERT_EQ(kOrder, series->Order());
    // Not refined: every line has a resolution.
    EXPECT_GT(series->Resolution(tape.rightHandSides[0]), -INFINITY);
    EXPECT_LT(LargestError(tape, *series, kOrder, exact), 16 - static_cast<double>(format.bits));
  }
}

/// With a scale far beyond the radius of convergence every term is larger than those before, which
/// move down for it and lose what it is larger by.
TEST_P(BlockSeriesOfFormat, MakesRoomForTermsThatRise)
{
  const Format& format = GetParam();
  Equations m;
  const Expression x = m.Variable("x", Rational(1)), y = m.Variable("y", Rational(2)),
                   z = m.Variable("z", Rational(3));
  m.SetDerivative(x, 10 * (y - x));
  m.SetDerivative(y, x * (28 - z) - y);
  m.SetDerivative(z, x * y - Rational(8, 3) * z + Function(kSqrt, y * y + 1) / (x * x + 1));
  const Tape tape = Compile(m.Finished());
  const auto series = format.make(tape, format.bits);
  MpfrSeries exact(tape, kReferenceBits, 20, false);
  std::vector<Real> states(3, Real(format.bits));
  for (Real& state : states) mpfr_const_pi(state, MPFR_RNDN);
  constexpr int kOrder = 10;
  series->Begin(Real(20), states, false, 0);
  exact.Begin(Real(20), states, false, 0);
  series->ExtendTo(kOrder);
  exact.ExtendTo(kOrder);
  const double rise = exact.Log2(0, kOrder) - exact.Log2(0, 0);
  EXPECT_GT(rise, 20);
  EXPECT_LT(LargestError(tape, *series, kOrder, exact),
            rise + 10 - static_cast<double>(format.bits));
}

/// A pendulum at rest: of each line every other term is 0.
TEST_P(BlockSeriesOfFormat, KnowsTermsThatVanish)
{
  const Format& format = GetParam();
  Equations m;
  const Expression a = m.Variable("a", Rational(2)), p = m.Variable("p", Rational(0));
  m.SetDerivative(a, p);
  m.SetDerivative(p, -1 * Function(kSin, a) + p * p * p + a * a * p);
  const Tape tape = Compile(m.Finished());
  const auto series = format.make(tape, format.bits);
  MpfrSeries exact(tape, kReferenceBits, 20, false);
  std::vector<Real> states(2, Real(format.bits));
  mpfr_set_ui(states[0], 3, MPFR_RNDN);
  mpfr_sqrt(states[0], states[0], MPFR_RNDN);
  series->Begin(Real(20), states, false, -1);
  exact.Begin(Real(20), states, false, -1);
  constexpr int kOrder = 30;
  series->ExtendTo(kOrder);
  exact.ExtendTo(kOrder);
  for (LineId line = 0; line < tape.lines.size(); ++line) {
    for (int k = 0; k <= kOrder; ++k) {
      EXPECT_EQ(series->Log2(line, k) == -INFINITY, exact.Log2(line, k) == -INFINITY)
          << "line " << line << " term " << k;
    }
  }
  EXPECT_LT(LargestError(tape, *series, kOrder, exact), 10 - static_cast<double>(format.bits));
}

/// log2 of the largest error that a term makes at the end of a step of 2^log2 units, beside the
/// resolution of its line.
double ErrorBesideResolution(const Tape& tape, const Series& series, double log2,
                             const Series& exact)
{
  double worst = -INFINITY;
  Real term(kReferenceBits), expected(kReferenceBits);
  for (LineId line = 0; line < tape.lines.size(); ++line) {
    for (int k = 1; k <= series.Order(); ++k) {
      series.Term(line, k, term);
      exact.Term(line, k, expected);
      mpfr_sub(term, term, expected, MPFR_RNDN);
      worst = std::max(worst, support::Log2(term) - series.Resolution(line) + k * log2);
    }
  }
  return worst;
}

/// Over a step of half a unit term k counts 2^-k, and a line needs no more digits than its largest
/// term of the step before tells: what is beyond that is not computed.
TEST_P(BlockSeriesOfFormat, NeedsNoMoreDigitsThanAStep)
{
  const Format& format = GetParam();
  const Tape tape = EveryLine();
  const auto series = format.make(tape, format.bits);
  MpfrSeries exact(tape, kReferenceBits, 20, false);
  Real time(20);
  mpfr_set_d(time, 0.25, MPFR_RNDN);
  constexpr int kOrder = 120;
  const std::vector<Real> states = States(tape, 20);
  const auto begin = [&] {
    series->Begin(time, states, false, -5);
    series->ExtendTo(kOrder);
  };
  exact.Begin(time, states, false, -5);
  exact.ExtendTo(kOrder);
  begin();
  EXPECT_EQ(0, series->ResolutionRise());
  ASSERT_EQ(0, series->MissingBits(-1, {static_cast<double>(format.bits)}));
  const double error = LargestError(tape, *series, kOrder, exact);
  const std::span<const long> largest = series->LargestTerms();

  series->Expect({largest.begin(), largest.end()});
  series->ExpectStep(-1);
  begin();
  const double rise = series->ResolutionRise();
  EXPECT_EQ(0, series->MissingBits(-1, {static_cast<double>(format.bits)}));
  if (rise > 0) {
    EXPECT_EQ(1, rise);
    EXPECT_LE(ErrorBesideResolution(tape, *series, -1, exact), 0);
    EXPECT_GT(LargestError(tape, *series, kOrder, exact), error + kOrder / 5.0);
    // Over a longer step these errors count.
    EXPECT_GT(series->MissingBits(0, {static_cast<double>(format.bits)}), 0);
    EXPECT_EQ(0, (series->Refine(), series->ResolutionRise()));
  } else {
    EXPECT_EQ(error, LargestError(tape, *series, kOrder, exact));
  }
}

const Format kFormats[] = {
    {"Narrow", 108, Make<NarrowArithmetic>},    {"Wide130", 130, Make<WideArithmetic<8>>},
    {"Wide265", 265, Make<WideArithmetic<8>>},  {"Wide357", 357, Make<WideArithmetic<8>>},
    {"Wide929", 929, Make<WideArithmetic<24>>}, {"Wide1700", 1700, Make<WideArithmetic<42>>},
    {"Long128", 128, Make<LongArithmetic>},     {"Long1700", 1700, Make<LongArithmetic>},
};

INSTANTIATE_TEST_SUITE_P(All, BlockSeriesOfFormat, testing::ValuesIn(kFormats),
                         [](const auto& info) { return std::string(info.param.name); });

// The same numbers for all precisions up to the one that is told, and longer ones behind it.
TEST(MostBitsAsCheapAs, IsTheEndOfAStretchOfPrecisions)
{
  mpfr_prec_t end = 0;
  for (mpfr_prec_t bits = 53; bits < 3000; ++bits) {
    const mpfr_prec_t most = MostBitsAsCheapAs(bits);
    ASSERT_GE(most, bits);
    if (bits <= end) {
      EXPECT_EQ(end, most) << bits;
    }
    end = most;
  }
}

}  // namespace
}  // namespace varno::solve
