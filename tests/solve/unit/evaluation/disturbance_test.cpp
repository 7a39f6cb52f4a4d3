#include "solve/evaluation/disturbance.h"

#include <cmath>
#include <set>

#include <gtest/gtest.h>

#include "solve/evaluation/size.h"
#include "solve/number/real.h"

namespace varno::solve {
namespace {

constexpr mpfr_prec_t kBits = 123;

Real Number(const char* text)
{
  Real number(kBits);
  mpfr_set_str(number, text, 10, MPFR_RNDN);
  return number;
}

Real Disturbed(Real number, std::uint64_t key)
{
  Disturb(number, key);
  return number;
}

TEST(Disturb, MovesByUnitsOfTheLastBit)
{
  for (const char* text : {"1", "-3.7e-90", "8e1000", "0.1"}) {
    const Real number = Number(text);
    for (std::uint64_t key = 0; key < 200; ++key) {
      Real difference(64);
      mpfr_sub(difference, Disturbed(number, key), number, MPFR_RNDN);
      // In units of the last bit
      const double unitLog2 =
          static_cast<double>(mpfr_get_exp(static_cast<mpfr_srcptr>(number)) - kBits);
      const double moved = Log2Size(difference) - unitLog2;
      EXPECT_GE(moved, -1) << text << ' ' << key;  // half a unit below a power of 2
      EXPECT_LE(moved, kDisturbanceBits) << text << ' ' << key;
    }
  }
}

TEST(Disturb, DependsOnTheKeyOnly)
{
  std::set<double> amounts;
  for (std::uint64_t key = 0; key < 100; ++key) {
    const Real once = Disturbed(Number("2.5"), key), again = Disturbed(Number("2.5"), key);
    EXPECT_NE(mpfr_equal_p(once, again), 0);
    Real difference(64);
    mpfr_sub(difference, once, Number("2.5"), MPFR_RNDN);
    amounts.insert(difference.ToDouble());
  }
  EXPECT_GT(amounts.size(), 90U);
  EXPECT_LT(*amounts.begin(), 0);
  EXPECT_GT(*amounts.rbegin(), 0);
}

TEST(Disturb, OppositeNumbersStayOpposite)
{
  Real sum(kBits);
  mpfr_add(sum, Disturbed(Number("0.1"), 7), Disturbed(Number("-0.1"), 7), MPFR_RNDN);
  EXPECT_TRUE(sum.IsZero());
}

TEST(Disturb, ZeroStaysZero)
{
  EXPECT_TRUE(Disturbed(Number("0"), 5).IsZero());
}

TEST(DisturbanceKey, IsTheSameForANumberAndItsOpposite)
{
  Graph graph;
  const NodeId third = graph.Number(Rational(1, 3), {}), minus = graph.Number(Rational(-1, 3), {});
  EXPECT_EQ(DisturbanceKey(graph, third), DisturbanceKey(graph, minus));
  EXPECT_NE(DisturbanceKey(graph, third), DisturbanceKey(graph, graph.Number(Rational(1, 7), {})));
  const NodeId pi = graph.Leaf(Operation::kPi, {});
  EXPECT_EQ(DisturbanceKey(graph, pi),
            DisturbanceKey(graph, graph.Make(Operation::kNegate, pi, {})));
}

TEST(IsExact, WhereSoManyBitsHoldTheNumber)
{
  Graph graph;
  EXPECT_TRUE(IsExact(graph, graph.Number(Rational(5, 8), {}), 3));
  EXPECT_FALSE(IsExact(graph, graph.Number(Rational(5, 8), {}), 2));
  EXPECT_FALSE(IsExact(graph, graph.Number(Rational(1, 3), {}), 1000));
  EXPECT_FALSE(IsExact(graph, graph.Leaf(Operation::kPi, {}), 1000));
}

}  // namespace
}  // namespace varno::solve
