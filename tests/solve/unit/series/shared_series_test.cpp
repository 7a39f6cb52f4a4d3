// Series whose lines several threads share, against those of one thread.

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "solve/series/line_schedule.h"
#include "solve/series/series.h"
#include "solve/tape/compile.h"
#include "solve/team/team.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::Power;
using enum Operation;

constexpr int kOrder = 12;

/// Groups of three variables in a ring, with every kind of line in each group.
Tape ManyLines(int groups)
{
  Equations m;
  const Expression t = m.Time();
  std::vector<Expression> x, y, z;
  for (int i = 0; i < groups; ++i) {
    const std::string number = std::to_string(i);
    x.push_back(m.Variable("x" + number, 1));
    y.push_back(m.Variable("y" + number, 1));
    z.push_back(m.Variable("z" + number, 1));
  }
  for (std::size_t i = 0; i < x.size(); ++i) {
    const Expression left = x[(i + x.size() - 1) % x.size()], right = y[(i + 1) % x.size()];
    const Expression u = 2 + x[i] * x[i] + z[i], w = right / u;
    m.SetDerivative(x[i], Function(kSin, right) * Function(kSqrt, u) + Rational(1, 3) * t);
    m.SetDerivative(y[i], Function(kExp, left) - 5 * w + Power(u, Rational(-3, 2)));
    m.SetDerivative(z[i], Function(kLn, u) * Function(kAtan2, left + 2, u) + Function(kTanh, w) +
                              Function(kErf, left) + Function(kAtan, t) - z[i]);
  }
  return Compile(m.Finished());
}

std::vector<Real> States(const Tape& tape, mpfr_prec_t bits, double step)
{
  std::vector<Real> states;
  for (std::size_t i = 0; i < tape.rightHandSides.size(); ++i)
    mpfr_set_d(states.emplace_back(bits), 0.625 - step * static_cast<double>(i % 7), MPFR_RNDN);
  return states;
}

/// The first difference between the terms and sums of two series.
std::optional<std::string> FirstDifference(const Tape& tape, const Series& a, const Series& b,
                                           mpfr_prec_t bits)
{
  Real first(bits), second(bits), offset(20);
  mpfr_set_d(offset, 0.40625, MPFR_RNDN);
  for (LineId line = 0; line < tape.lines.size(); ++line) {
    for (int k = 0; k <= kOrder; ++k) {
      a.Term(line, k, first);
      b.Term(line, k, second);
      if (mpfr_equal_p(first, second) == 0 || a.Log2(line, k) != b.Log2(line, k))
        return "term " + std::to_string(k) + " of line " + std::to_string(line);
    }
  }
  const std::size_t count = tape.rightHandSides.size();
  std::vector<Real> values(count, Real(bits)), sums = values, sumsOfStep = values, slopes = values;
  std::vector<unsigned char> areRounded(count);
  b.SumStatesWithDerivatives(offset, sums, slopes);
  b.SumStates(offset, sumsOfStep, areRounded);
  for (std::size_t i = 0; i < count; ++i) {
    mpfr_clear_inexflag();
    a.Sum(static_cast<LineId>(i), offset, values[i]);
    const bool isRounded = mpfr_inexflag_p() != 0;
    if (isRounded != (areRounded[i] != 0) || mpfr_equal_p(values[i], sumsOfStep[i]) == 0)
      return "sum of state " + std::to_string(i);
    a.SumWithDerivative(static_cast<LineId>(i), offset, first, second);
    if (mpfr_equal_p(first, sums[i]) == 0 || mpfr_equal_p(second, slopes[i]) == 0)
      return "slope of state " + std::to_string(i);
  }
  return std::nullopt;
}

/// The bits choose the arithmetic.
class SharedSeries : public testing::TestWithParam<mpfr_prec_t> {};

TEST_P(SharedSeries, HasTheTermsOfOneThread)
{
  const mpfr_prec_t bits = GetParam();
  const Tape tape = ManyLines(bits > 1000 ? 40 : 120);
  const auto alone = MakeSeries(tape, bits, kOrder);
  for (const int members : {2, 3}) {
    ASSERT_TRUE(IsWorthSharing(tape, bits, kOrder, members));
    const auto shared = MakeSeries(tape, bits, kOrder, false, {}, std::make_shared<Team>(members));
    std::vector<long> largest;
    // Without knowledge of earlier terms, and with it.
    for (const double step : {0.125, 0.15625}) {
      for (Series* series : {alone.get(), shared.get()}) {
        series->Expect(largest);
        series->Begin(Real(20), States(tape, bits, step), step > 0.15, -4);
        // In two parts, as flat lines have it.
        series->ExtendTo(kOrder - 3);
        series->ExtendTo(kOrder);
      }
      EXPECT_EQ(FirstDifference(tape, *alone, *shared, bits), std::nullopt) << members;
      const Exactness asked{static_cast<double>(bits)};
      EXPECT_EQ(alone->MissingBits(0, asked), shared->MissingBits(0, asked));
      EXPECT_FALSE(shared->IsRefined());
      largest.assign(alone->LargestTerms().begin(), alone->LargestTerms().end());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Bits, SharedSeries, testing::Values(100, 300, 900, 2100));

// Groups that begin alike stay alike, however many there are. Of many, terms are summed in other
// ways than of few.
TEST(LargeSeries, HasTheTermsOfASmallOne)
{
  constexpr int kHighOrder = 60;
  constexpr mpfr_prec_t kBits = 300;
  const Tape small = ManyLines(1), large = ManyLines(150);
  const auto few = MakeSeries(small, kBits, kHighOrder),
             many = MakeSeries(large, kBits, kHighOrder);
  Real expected(kBits), found(kBits);
  const auto toOrder = [&](int order) {
    few->ExtendTo(order);
    many->ExtendTo(order);
  };
  // Each time from the beginning again with other terms, once they are as many as before
  for (const long scale : {-4, -3, -1}) {
    few->Begin(Real(20), States(small, kBits, 0), false, scale);
    many->Begin(Real(20), States(large, kBits, 0), false, scale);
    toOrder(21);
    few->Begin(Real(20), States(small, kBits, 0), true, scale);
    many->Begin(Real(20), States(large, kBits, 0), true, scale);
    for (const int order : {21, 37, kHighOrder}) toOrder(order);
    for (int k = 0; k <= kHighOrder; ++k) {
      for (LineId state = 0; state < large.rightHandSides.size(); ++state) {
        few->Term(state % 3, k, expected);
        many->Term(state, k, found);
        ASSERT_TRUE(mpfr_equal_p(expected, found) != 0)
            << "term " << k << " of state " << state << ", scale " << scale;
      }
    }
  }
}

/// The expression that a series cannot begin with.
NodeId WhereBeginFails(const Tape& tape, std::span<const Real> states, std::shared_ptr<Team> team)
{
  const auto series = MakeSeries(tape, 100, kOrder, false, {}, std::move(team));
  try {
    series->Begin(Real(20), states, false, 0);
  } catch (const DomainError& error) {
    return error.node;
  }
  return 0;
}

// Of several domain errors the first of the tape, whoever meets it.
TEST(SharedSeriesErrors, AreThoseOfOneThread)
{
  const Tape tape = ManyLines(120);
  for (const std::size_t count : {1, 2, 60}) {
    std::vector<Real> states = States(tape, 100, 0.125);
    // Of u = 2 + x^2 + z
    for (std::size_t i = 0; i < count; ++i)
      mpfr_set_si(states[states.size() - 1 - 3 * i], -5, MPFR_RNDN);
    const NodeId node = WhereBeginFails(tape, states, nullptr);
    ASSERT_NE(node, 0U);
    for (int i = 0; i < 20; ++i)
      EXPECT_EQ(WhereBeginFails(tape, states, std::make_shared<Team>(3)), node);
  }
}

// What `poll` throws comes out, and the series can be begun again.
TEST(SharedSeriesErrors, InterruptionEndsAllThreads)
{
  const Tape tape = ManyLines(120);
  int pollsLeft = 0;
  const auto poll = [&pollsLeft] {
    if (--pollsLeft == 0) throw std::runtime_error("interrupted");
  };
  const auto shared = MakeSeries(tape, 100, kOrder, false, poll, std::make_shared<Team>(3));
  const auto alone = MakeSeries(tape, 100, kOrder);
  shared->Begin(Real(20), States(tape, 100, 0.125), false, -4);
  pollsLeft = 3;
  EXPECT_THROW(shared->ExtendTo(kOrder), std::runtime_error);
  for (Series* series : {shared.get(), alone.get()}) {
    series->Begin(Real(20), States(tape, 100, 0.125), false, -4);
    series->ExtendTo(kOrder);
  }
  EXPECT_EQ(FirstDifference(tape, *alone, *shared, 100), std::nullopt);
}

}  // namespace
}  // namespace varno::solve
