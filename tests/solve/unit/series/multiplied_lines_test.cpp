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

using Kinds = std::multiset<LineKind>;

/// The kinds of the lines that are multiplied in products, and elsewhere.
struct Found {
  Kinds inProducts, elsewhere;

  friend bool operator==(const Found&, const Found&) = default;
};

/// Those of x' = f(x)
template <class RightHandSide>
Found Multiplied(RightHandSide f)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, f(x));
  const Tape tape = Compile(m.Finished());
  const auto [inProducts, elsewhere] = LinesMultiplied(tape);
  Found found;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const LineKind kind = tape.lines[id].kind;
    if (inProducts[id]) found.inProducts.insert(kind);
    if (elsewhere[id]) found.elsewhere.insert(kind);
  }
  return found;
}

TEST(LinesMultiplied, AreNoneInLinearEquations)
{
  EXPECT_EQ(Found(), Multiplied([](const Expression& x) { return 2 - 3 * x; }));
}

TEST(LinesMultiplied, AreTheFactorsOfProductsAndSquares)
{
  EXPECT_EQ((Found{{LineKind::kState}, {}}),
            Multiplied([](const Expression& x) { return Power(x, 2); }));
  EXPECT_EQ((Found{{LineKind::kState, LineKind::kCombination}, {}}),
            Multiplied([](const Expression& x) { return x * (1 - x); }));
}

TEST(LinesMultiplied, AreDivisorsAndQuotients)
{
  EXPECT_EQ((Found{{}, {LineKind::kCombination, LineKind::kQuotient}}),
            Multiplied([](const Expression& x) { return x / (1 + x); }));
}

TEST(LinesMultiplied, AreRootsAndPowersWithTheirBases)
{
  EXPECT_EQ((Found{{}, {LineKind::kSquareRoot}}),
            Multiplied([](const Expression& x) { return Function(Operation::kSqrt, x); }));
  EXPECT_EQ((Found{{}, {LineKind::kState, LineKind::kPower}}),
            Multiplied([](const Expression& x) { return Power(x, Rational(1, 3)); }));
}

// s = exp(x): k s[k] is the sum of j x[j] s[k-j].
TEST(LinesMultiplied, AreDerivativesOfFunctions)
{
  EXPECT_EQ((Found{{}, {LineKind::kIntegralOfProduct}}),
            Multiplied([](const Expression& x) { return Function(Operation::kExp, x); }));
}

TEST(LinesMultiplied, AreInBothPlaces)
{
  EXPECT_EQ((Found{{LineKind::kState, LineKind::kSquareRoot}, {LineKind::kSquareRoot}}),
            Multiplied([](const Expression& x) { return x * Function(Operation::kSqrt, x); }));
}

}  // namespace
}  // namespace varno::solve
