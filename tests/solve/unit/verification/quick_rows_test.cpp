#include "solve/verification/quick_rows.h"

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

/// What is asked for beside the equations.
struct Request {
  Interval interval{Moment(Rational(0)), Moment(Rational(0)), Moment(Rational(10))};
  int digits = 10;
  std::function<void(RowsWanted&)> change = [](RowsWanted&) {};
};

std::optional<QuickRows> Solve(const Model& model, std::vector<NodeId> columns,
                               const Request& request)
{
  RowsWanted wanted{.columns = std::move(columns),
                    .digits = request.digits,
                    .check = true,
                    .maxBits = 1 << 20,
                    .threads = 1,
                    .mayBeQuick = true};
  request.change(wanted);
  const Dynamics dynamics(model, Compile(model));
  const RowSchedule schedule(request.interval,
                             RowTimes::Points(request.interval.from, request.interval.to, 7));
  return SolveQuickly(model, dynamics, request.interval, schedule, wanted, {});
}

/// x' = v, v' = -x from (1, 0), and the definition x + 2 v.
std::optional<QuickRows> SolveOscillator(const Request& request)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  const NodeId sum = (x + 2 * v).id;
  return Solve(m.Finished(), {x.id, v.id, sum}, request);
}

TEST(QuickRows, AreThoseOfAClosedForm)
{
  const Moment zero(Rational(0));
  const auto solution = SolveOscillator({.interval = {zero, zero, Moment(Rational(20))}});
  ASSERT_TRUE(solution);
  ASSERT_EQ(solution->rows.size(), 8);
  EXPECT_EQ(solution->best.bits, 64);
  EXPECT_GT(solution->best.steps, 5);
  for (const VerifiedRow& row : solution->rows) {
    const double t = row.time.ToDouble();
    EXPECT_NEAR(row.numbers[0].value->ToDouble(), std::cos(t), 1e-15);
    EXPECT_NEAR(row.numbers[1].value->ToDouble(), -std::sin(t), 1e-15);
    EXPECT_NEAR(row.numbers[2].value->ToDouble(), std::cos(t) - 2 * std::sin(t), 1e-15);
  }
  EXPECT_TRUE(solution->rows[0].numbers[1].value->IsZero());
}

TEST(QuickRows, MayGoBackwards)
{
  const Moment zero(Rational(0));
  const auto solution = SolveOscillator({.interval = {zero, zero, Moment(Rational(-10))}});
  ASSERT_TRUE(solution);
  EXPECT_NEAR(solution->rows.back().numbers[0].value->ToDouble(), std::cos(-10), 1e-15);
  EXPECT_NEAR(solution->rows.back().numbers[1].value->ToDouble(), -std::sin(-10), 1e-15);
}

TEST(QuickRows, AreLeftToOthersWhereMoreIsAskedFor)
{
  EXPECT_TRUE(SolveOscillator({}));
  EXPECT_FALSE(SolveOscillator({.digits = 11}));
  const auto with = [](std::function<void(RowsWanted&)> change) {
    return SolveOscillator({.change = std::move(change)});
  };
  EXPECT_FALSE(with([](RowsWanted& wanted) { wanted.check = false; }));
  EXPECT_FALSE(with([](RowsWanted& wanted) { wanted.mayBeQuick = false; }));
  EXPECT_FALSE(with([](RowsWanted& wanted) { wanted.maxBits = 100; }));
  EXPECT_FALSE(with([](RowsWanted& wanted) { wanted.tinyLog2 = -10; }));
  EXPECT_FALSE(with([](RowsWanted& wanted) { wanted.log2Steady = -10; }));
  EXPECT_FALSE(with([](RowsWanted& wanted) { wanted.periodEvent = 0; }));
  const Moment zero(Rational(0)), one(Rational(1));
  EXPECT_FALSE(SolveOscillator({.interval = {one, zero, Moment(Rational(2))}}));
}

// cos(pi/2), which is 0
TEST(QuickRows, NumbersNearZeroAreLeftToOthers)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  const Moment zero(Rational(0));
  const Rational nearHalfPi(355, 226);  // off by 1.3e-7
  EXPECT_FALSE(
      Solve(m.Finished(), {x.id}, {.interval = {zero, zero, Moment(nearHalfPi)}, .digits = 2}));
  EXPECT_TRUE(
      Solve(m.Finished(), {v.id}, {.interval = {zero, zero, Moment(nearHalfPi)}, .digits = 2}));
}

// 0.125 lies between 0.12 and 0.13.
TEST(QuickRows, NumbersOnABoundaryOfRoundingAreLeftToOthers)
{
  const auto solve = [](const Rational& start, int digits) {
    Equations m;
    const Expression x = m.Variable("x", start);
    m.SetDerivative(x, support::Function(Operation::kSin, m.Time()));
    return Solve(m.Finished(), {x.id}, {.digits = digits}).has_value();
  };
  EXPECT_FALSE(solve(Rational(1, 8), 2));
  EXPECT_TRUE(solve(Rational(1, 8), 3));
}

// At rest until rounding tells: x = 1 + 1e-30 sinh(t)
TEST(QuickRows, WhatRoundingDecidesIsLeftToOthers)
{
  Rational little = 1;
  for (int i = 0; i < 30; ++i) little /= 10;
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x - 1 + little * support::Function(Operation::kExp, -m.Time()));
  EXPECT_FALSE(
      Solve(m.Finished(), {x.id},
            {.interval = {Moment(Rational(0)), Moment(Rational(0)), Moment(Rational(140))}}));
}

TEST(QuickRows, ConstantsWithoutAValueAreLeftToOthers)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x * (m.Pi() / support::Function(Operation::kLn, m.Pi() - m.Pi())));
  EXPECT_FALSE(Solve(m.Finished(), {x.id}, {}));
}

TEST(QuickRows, MayBeInterrupted)
{
  struct Interrupted {};
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, -x);
  const Model model = m.Finished();
  const Dynamics dynamics(model, Compile(model));
  const Interval interval{Moment(Rational(0)), Moment(Rational(0)), Moment(Rational(10))};
  const RowSchedule schedule(interval, RowTimes::Last(interval.to));
  const RowsWanted wanted{.columns = {x.id},
                          .digits = 5,
                          .check = true,
                          .maxBits = 1 << 20,
                          .threads = 1,
                          .mayBeQuick = true};
  EXPECT_THROW(
      SolveQuickly(model, dynamics, interval, schedule, wanted, [] { throw Interrupted(); }),
      Interrupted);
}

}  // namespace
}  // namespace varno::solve
