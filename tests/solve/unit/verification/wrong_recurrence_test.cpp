// What both runs do wrong alike, only the defect of their steps can show: it compares the series
// with the expressions, of which they are made by other code.

#include <cmath>
#include <optional>

#include <gtest/gtest.h>

#include "solve/integration/step_series.h"
#include "solve/rows/row_times.h"
#include "solve/switching/dynamics.h"
#include "solve/tape/compile.h"
#include "solve/verification/verified_rows.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

std::optional<VerifiedRow> RowAtOne(const Model& model, const Tape& tape)
{
  const Moment start(Rational(0)), end(1);
  const Interval interval{start, start, end};
  const Dynamics dynamics(model, tape);
  VerifiedRows rows(model, dynamics, interval, RowSchedule(interval, RowTimes::Last(end)),
                    {.columns = {model.columns.front().value},
                     .digits = 15,
                     .check = true,
                     .maxBits = 4096,
                     .threads = 1},
                    [](std::size_t, const DenseStep&) {}, {});
  return rows.Next();
}

/// x' = -2 x from 1
class WrongRecurrence : public testing::Test {
 protected:
  WrongRecurrence()
  {
    const Expression x = equations.Variable("x", 1);
    equations.SetDerivative(x, -2 * x);
    model = equations.Finished();
    model.columns = {{.name = "x", .value = x.id}};
    tape = Compile(model);
  }

  Equations equations;
  Model model;
  Tape tape;
};

TEST_F(WrongRecurrence, TheRightOneGivesTheRow)
{
  const auto row = RowAtOne(model, tape);
  ASSERT_TRUE(row);
  EXPECT_NEAR(row->numbers.front().value->ToDouble(), std::exp(-2), 1e-15);
}

// The tape says x' = 2 x: both runs agree on e^2. No precision makes the defect of a step small.
TEST_F(WrongRecurrence, OnlyTheDefectOfStepsShowsIt)
{
  for (Factor& factor : tape.factors) factor.whole = -factor.whole;
  EXPECT_THROW(RowAtOne(model, tape), PrecisionExhausted);
}

}  // namespace
}  // namespace varno::solve
