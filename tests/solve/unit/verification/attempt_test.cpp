#include "solve/verification/attempt.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/integration/run.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

// x' = -1 from 1, and the definitions sqrt(x) and x + t - 1
TEST(Attempt, HasARowForEachRunAndANumberForEachColumn)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, m.Number(-1));
  const std::vector<NodeId> columns{x.id, support::Function(Operation::kSqrt, x).id,
                                    (x + m.Time() - 1).id};
  const Model model = m.Finished();
  const Tape tape = Compile(model);
  const RunSettings first = SettingsFor(22, 20), second = SettingsFor(25, 20);
  Real one(second.bits);
  mpfr_set_ui(one, 1, MPFR_RNDN);
  Attempt attempt(model, columns, 15,
                  {.makeRun = RunsOf(tape),
                   .interval = {Moment(Rational(0)), Moment(Rational(0)), Moment(2)},
                   .settings = {first, second},
                   .startStates = {{one}, {one}},
                   .watch = [](std::size_t, const DenseStep&) {},
                   .poll = {},
                   .compare = [](const Moment&, const DenseStep&, const DenseStep&) {},
                   .threads = 1},
                  {});

  const auto row = attempt.RowAt(Moment(Rational(3, 4)));
  ASSERT_EQ(row.size(), 2);
  for (const std::vector<SizedNumber>& run : row) {
    ASSERT_EQ(run.size(), 3);
    EXPECT_DOUBLE_EQ(run[0].value->ToDouble(), 0.25);
    EXPECT_DOUBLE_EQ(run[1].value->ToDouble(), 0.5);
    EXPECT_LT(std::abs(run[2].value->ToDouble()), 1e-22);
    EXPECT_NEAR(run[2].size, 1, 1.5);  // 0 of what is as large as 1
  }
  // sqrt(-1) is undefined; the others do not mind.
  for (const std::vector<SizedNumber>& run : attempt.RowAt(Moment(2))) {
    EXPECT_FALSE(run[1].value);
    EXPECT_DOUBLE_EQ(run[0].value->ToDouble(), -1);
  }
  EXPECT_GT(attempt.Integration().Steps(), 0);
}

}  // namespace
}  // namespace varno::solve
