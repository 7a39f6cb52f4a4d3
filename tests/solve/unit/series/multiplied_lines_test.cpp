// Which lines are factors in sums of products, by what the recurrences say.

#include "solve/series/multiplied_lines.h"

#include <set>

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::Power;

/// The kinds of the lines that are multiplied in x' = f(x).
template <class RightHandSide>
std::multiset<LineKind> Multiplied(RightHandSide f)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, f(x));
  const Tape tape = Compile(m.Finished());
  const std::vector<bool> multiplied = LinesMultiplied(tape);
  std::multiset<LineKind> kinds;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (multiplied[id]) kinds.insert(tape.lines[id].kind);
  }
  return kinds;
}

using Kinds = std::multiset<LineKind>;

TEST(LinesMultiplied, AreNoneInLinearEquations)
{
  EXPECT_EQ(Kinds{}, Multiplied([](const Expression& x) { return 2 - 3 * x; }));
}

TEST(LinesMultiplied, AreTheFactorsOfProductsAndSquares)
{
  EXPECT_EQ(Kinds{LineKind::kState}, Multiplied([](const Expression& x) { return Power(x, 2); }));
  EXPECT_EQ((Kinds{LineKind::kState, LineKind::kCombination}),
            Multiplied([](const Expression& x) { return x * (1 - x); }));
}

TEST(LinesMultiplied, AreDivisorsAndQuotients)
{
  EXPECT_EQ((Kinds{LineKind::kCombination, LineKind::kQuotient}),
            Multiplied([](const Expression& x) { return x / (1 + x); }));
}

TEST(LinesMultiplied, AreRootsAndPowersWithTheirBases)
{
  EXPECT_EQ(Kinds{LineKind::kSquareRoot},
            Multiplied([](const Expression& x) { return Function(Operation::kSqrt, x); }));
  EXPECT_EQ((Kinds{LineKind::kState, LineKind::kPower}),
            Multiplied([](const Expression& x) { return Power(x, Rational(1, 3)); }));
}

// s = exp(x): k s[k] is the sum of j x[j] s[k-j].
TEST(LinesMultiplied, AreDerivativesOfFunctions)
{
  EXPECT_EQ(Kinds{LineKind::kIntegralOfProduct},
            Multiplied([](const Expression& x) { return Function(Operation::kExp, x); }));
}

}  // namespace
}  // namespace varno::solve
