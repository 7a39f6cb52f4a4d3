// Arguments within their rounding of the edge of a domain, by hand.

#include "solve/evaluation/edges.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr double kZeroBits = 100;
constexpr double kNoiseBits = 90;
constexpr EdgeRule kRule{kNoiseBits, kZeroBits, true};

Real Number(const std::string& text)
{
  Real number(300);
  mpfr_set_str(number, text.c_str(), 10, MPFR_RNDN);
  return number;
}

/// Of the argument and, where there is one, a second operand, both of size 1 at least.
std::optional<Edge> EdgeOf(Operation operation, const std::string& a, const std::string& b = "1",
                           const EdgeRule& rule = kRule)
{
  const Real first = Number(a), second = Number(b);
  return EdgeAt(operation, false, {first, std::max(0.0, Log2Size(first))},
                {second, std::max(0.0, Log2Size(second))}, rule);
}

}  // namespace

TEST(Edges, ArgumentsWithinTheirRoundingAreOnTheEdge)
{
  for (const char* sign : {"", "-"}) {
    for (const Operation function : {Operation::kSqrt, Operation::kLn, Operation::kAcot}) {
      const auto edge = EdgeOf(function, sign + std::string("1e-40"));
      ASSERT_TRUE(edge);
      EXPECT_TRUE(edge->argument.IsZero());
    }
  }
  EXPECT_EQ(
      1,
      EdgeOf(Operation::kAcos, "1.0000000000000000000000000000000000000001")->argument.ToDouble());
  EXPECT_EQ(
      -1,
      EdgeOf(Operation::kAsin, "-0.9999999999999999999999999999999999999999")->argument.ToDouble());
  EXPECT_EQ(
      1,
      EdgeOf(Operation::kAcosh, "0.9999999999999999999999999999999999999999")->argument.ToDouble());
  EXPECT_TRUE(EdgeOf(Operation::kPower, "-1e-40", "0.4"));
  EXPECT_TRUE(EdgeOf(Operation::kDivide, "1", "1e-40")->isSecond);
  EXPECT_TRUE(EdgeOf(Operation::kAtan2, "-1e-40", "-1"));
}

// tan(pi/2 - d) is about 1/d.
TEST(Edges, ATangentBeyondTheNoiseIsOnItsPole)
{
  const EdgeRule lessExact{kNoiseBits, kZeroBits, false};
  EXPECT_TRUE(IsOnPole(Operation::kTan, Number("1e40"), 1, kRule));
  EXPECT_TRUE(IsOnPole(Operation::kCot, Number("-1e40"), 1, kRule));
  EXPECT_FALSE(IsOnPole(Operation::kTan, Number("1e20"), 1, kRule));
  EXPECT_FALSE(IsOnPole(Operation::kSinh, Number("1e40"), 1, kRule));
  EXPECT_THROW(IsOnPole(Operation::kTan, Number("1e40"), 1, lessExact), EdgeInDoubt);
}

TEST(Edges, OthersAreClear)
{
  EXPECT_FALSE(EdgeOf(Operation::kSqrt, "1e-20"));
  EXPECT_FALSE(EdgeOf(Operation::kAcos, "-1e-40"));
  EXPECT_FALSE(EdgeOf(Operation::kAtan2, "1e-40", "1"));  // to the right of the origin
  EXPECT_FALSE(EdgeOf(Operation::kCbrt, "1e-40"));
  EXPECT_FALSE(EdgeOf(Operation::kSin, "1e-40"));
  const Real small = Number("1e-40"), two = Number("2"), minusTwo = Number("-2");
  const auto power = [&](const Real& exponent) {
    return EdgeAt(Operation::kPower, true, {small, 0}, {exponent, 1}, kRule);
  };
  EXPECT_FALSE(power(two));
  EXPECT_TRUE(power(minusTwo));
}

// As small as it was computed: nothing has cancelled.
TEST(Edges, SmallNumbersAreNoRests)
{
  const Real small = Number("1e-40");
  EXPECT_FALSE(EdgeAt(Operation::kSqrt, false, {small, Log2Size(small)}, {small, 0}, kRule));
}

TEST(Edges, ExactZerosAreNone)
{
  const Real zero = Number("0");
  EXPECT_FALSE(EdgeAt(Operation::kSqrt, false, {zero, -INFINITY}, {zero, -INFINITY}, kRule));
}

TEST(Edges, RunsThatMayNotSayAreInDoubt)
{
  const EdgeRule lessExact{kNoiseBits, kZeroBits, false};
  EXPECT_THROW(EdgeOf(Operation::kSqrt, "1e-40", "1", lessExact), EdgeInDoubt);
  EXPECT_FALSE(EdgeOf(Operation::kSqrt, "1e-20", "1", lessExact));
  // 2^-94: noise, and no zero
  EXPECT_THROW(EdgeOf(Operation::kSqrt, "5e-29"), EdgeInDoubt);
}

// A zero to the unit of sqrt(2^-100): 2^-50. Beside 1, acos(1 - 2^-100) is sqrt(2) 2^-50.
TEST(Edges, SizesTellWhatTheDistanceMayMakeOfTheResult)
{
  const Real zero = Number("0");
  const auto edge = EdgeOf(Operation::kSqrt, "1e-40");
  EXPECT_NEAR(SizeAtEdge(*edge, zero, 0, kRule) - kZeroBits, -50, 0.6);
  const auto jump = EdgeOf(Operation::kAcot, "1e-40");
  EXPECT_EQ(0, SizeAtEdge(*jump, Number("1"), 0, kRule));
}

}  // namespace varno::solve
