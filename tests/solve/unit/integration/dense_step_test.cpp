#include "solve/integration/dense_step.h"

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

constexpr mpfr_prec_t kBits = 120;

/// x' = 2 t from x = 1 at t = 0: 1 + t^2, of which two steps of 3 are looked at in units of 4.
class DenseStepTest : public testing::Test {
 protected:
  DenseStepTest()
  {
    Equations m;
    const Expression x = m.Variable("x", 1);
    m.SetDerivative(x, m.Time() * 2);
    tape = Compile(m.Finished());
  }

  DenseStep Make(bool backwards) const
  {
    std::shared_ptr<Series> series = MakeSeries(tape, kBits, 4);
    std::vector<Real> start(1, Real(kBits));
    mpfr_set_ui(start[0], 1, MPFR_RNDN);
    series->Begin(Real(kBits), start, backwards, 2);
    series->ExtendTo(4);
    std::vector<Real> end(1, Real(kBits));
    mpfr_set_ui(end[0], 10, MPFR_RNDN);
    return {.begin = Moment(Rational(0)),
            .end = Moment(Rational(backwards ? -3 : 3)),
            .backwards = backwards,
            .states = std::move(end),
            .stateSizes = {},
            .series = std::move(series),
            .scaleExponent = 2,
            .bits = kBits};
  }

  Tape tape;
};

TEST_F(DenseStepTest, HasTheStatesWithin)
{
  const DenseStep step = Make(false);
  EXPECT_TRUE(support::IsWithin(-110, step.StatesAt(Moment(Rational(1, 2)))[0],
                                support::FromText("5/4", kBits)));
  EXPECT_TRUE(support::IsWithin(-110, step.StatesAt(Moment(Rational(3)))[0],
                                support::FromText("10", kBits)));
}

TEST_F(DenseStepTest, HasThemBackwardsToo)
{
  const DenseStep step = Make(true);
  EXPECT_TRUE(support::IsWithin(-110, step.StatesAt(Moment(Rational(-2)))[0],
                                support::FromText("5", kBits)));
}

TEST_F(DenseStepTest, KnowsWhatLiesBehindIt)
{
  EXPECT_TRUE(Make(false).IsBehind(Moment(Rational(4))));
  EXPECT_FALSE(Make(false).IsBehind(Moment(Rational(3))));
  EXPECT_TRUE(Make(true).IsBehind(Moment(Rational(-4))));
  EXPECT_FALSE(Make(true).IsBehind(Moment(Rational(4))));
}

}  // namespace
}  // namespace varno::solve
