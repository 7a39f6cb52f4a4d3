// States apart from their series: what the series had, to the last bit, after it is begun anew.

#include "solve/series/block_states.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solve/fixed/long.h"
#include "solve/fixed/wide.h"
#include "solve/series/block_series.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

constexpr int kOrder = 30;

/// x' = y + 1, y' = -x y
Tape TwoStates()
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 2);
  m.SetDerivative(x, y + 1);
  m.SetDerivative(y, -x * y);
  return Compile(m.Finished());
}

std::vector<Real> States(mpfr_prec_t bits, double first)
{
  std::vector<Real> states;
  for (int i = 0; i < 2; ++i) mpfr_set_d(states.emplace_back(bits), first - i, MPFR_RNDN);
  return states;
}

/// What is asked for of the states: all terms, and sums at offsets of few and of many bits.
std::vector<Real> NumbersOf(const StateTerms& terms, mpfr_prec_t bits)
{
  std::vector<Real> numbers;
  for (LineId state = 0; state < 2; ++state) {
    for (int k = 0; k <= terms.Order(); ++k) {
      terms.Term(state, k, numbers.emplace_back(bits));
      mpfr_set_d(numbers.emplace_back(53), terms.Log2(state, k), MPFR_RNDN);
    }
    for (const double numerator : {1.0, 3.0, 8.0}) {
      Real offset(200);
      for (const double denominator : {8.0, 7.0}) {
        mpfr_set_d(offset, numerator, MPFR_RNDN);
        mpfr_div_d(offset, offset, denominator, MPFR_RNDN);
        terms.Sum(state, offset, numbers.emplace_back(bits));
      }
    }
  }
  return numbers;
}

template <class Arithmetic>
void ExpectCopies(mpfr_prec_t bits)
{
  const Tape tape = TwoStates();
  BlockSeries<Arithmetic> series(tape, bits, 20, false);
  EXPECT_EQ(nullptr, series.CopyOfStates()) << "nothing begun";
  series.Begin(Real(20), States(bits, 0.625), false, -5);
  series.ExtendTo(kOrder);
  const std::vector<Real> expected = NumbersOf(series, bits);
  const std::unique_ptr<StateTerms> copy = series.CopyOfStates();
  ASSERT_NE(nullptr, copy);
  series.Begin(Real(20), States(bits, 0.375), false, -5);
  series.ExtendTo(kOrder);
  EXPECT_EQ(kOrder, copy->Order());
  EXPECT_EQ(static_cast<std::size_t>(kOrder) + 1, copy->Logs(1).size());
  const std::vector<Real> found = NumbersOf(*copy, bits);
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_TRUE(mpfr_equal_p(expected[i], found[i]) != 0) << bits << " bits, number " << i;
  EXPECT_EQ(nullptr, copy->CopyOfStates());
  series.Refine();
  EXPECT_EQ(nullptr, series.CopyOfStates()) << "other terms";
}

TEST(BlockStates, StayWhenTheSeriesGoesOn)
{
  ExpectCopies<NarrowArithmetic>(108);
  ExpectCopies<WideArithmetic<8>>(265);
  ExpectCopies<WideArithmetic<24>>(929);
}

TEST(BlockStates, AreNotForLongNumbers)
{
  const Tape tape = TwoStates();
  BlockSeries<LongArithmetic> series(tape, 3000, 20, false);
  series.Begin(Real(20), States(3000, 0.625), false, -5);
  series.ExtendTo(kOrder);
  EXPECT_EQ(nullptr, series.CopyOfStates());
}

}  // namespace
}  // namespace varno::solve
