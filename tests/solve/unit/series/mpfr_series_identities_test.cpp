// Identities between functions hold for their series, term by term.

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/taylor_terms.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::Power;
using support::PowerSeries;
using enum Operation;

constexpr int kOrder = 24;
/// Bits that the rounding of all terms on both sides may take; the worst was seen to take 5.
constexpr double kLostBits = 10;

Expression Square(Expression u)
{
  return u * u;
}

/// Both sides as functions of u and v, two series without zeros.
struct Identity {
  const char* name;
  Expression (*left)(Equations&, Expression u, Expression v);
  Expression (*right)(Equations&, Expression u, Expression v);
  /// The values that u has at the point of the series.
  std::vector<Rational> points;
};

const Rational kTiny("1/1000000000000000000000000000000");
const Rational kLarge("1000000000000000000000001/7");
const std::vector<Rational> kAnywhere{0, kTiny, Rational(-22, 7), Rational(1001, 300)};
const std::vector<Rational> kPositive{Rational(1, 1024), Rational(7, 5), kLarge};
const std::vector<Rational> kNearZero{0, kTiny, Rational(-3, 4), Rational(5, 4)};

const Identity kIdentities[] = {
    {"SumTimesDifference", [](Equations&, Expression u, Expression v) { return (u + v) * (u - v); },
     [](Equations&, Expression u, Expression v) { return u * u - v * v; }, kAnywhere},
    {"QuotientTimesDivisor", [](Equations&, Expression u, Expression v) { return u / v * v; },
     [](Equations&, Expression u, Expression) { return u; }, kAnywhere},
    {"InverseOfInverse",
     [](Equations&, Expression u, Expression) { return 1 / (1 / u); },
     [](Equations&, Expression u, Expression) { return u; },
     {Rational(-22, 7), kLarge}},
    {"SeventhPower", [](Equations&, Expression u, Expression) { return Power(u, 7); },
     [](Equations&, Expression u, Expression) { return u * (u * (u * (u * (u * (u * u))))); },
     kAnywhere},
    {"NegativePower",
     [](Equations&, Expression u, Expression) { return Power(u, -5) * Power(u, 6); },
     [](Equations&, Expression u, Expression) { return u; },
     {Rational(-22, 7), kLarge}},
    {"SquareOfRoot",
     [](Equations&, Expression u, Expression) { return Square(Function(kSqrt, u)); },
     [](Equations&, Expression u, Expression) { return u; }, kPositive},
    {"HalfPower", [](Equations&, Expression u, Expression) { return Power(u, Rational(1, 2)); },
     [](Equations&, Expression u, Expression) {
       return Power(u, Rational(1, 4)) * Power(u, Rational(1, 4));
     },
     kPositive},
    {"CubeOfCubeRoot",
     [](Equations&, Expression u, Expression) { return Power(Function(kCbrt, u), 3); },
     [](Equations&, Expression u, Expression) { return u; },
     {Rational(1, 1024), Rational(-22, 7), kLarge}},
    {"PowerOfPower",
     [](Equations&, Expression u, Expression) {
       return Power(Power(u, Rational(3, 7)), Rational(7, 3));
     },
     [](Equations&, Expression u, Expression) { return u; }, kPositive},
    {"NegativeRealPower",
     [](Equations&, Expression u, Expression) {
       return Power(Power(u, Rational(-5, 2)), Rational(-2, 5));
     },
     [](Equations&, Expression u, Expression) { return u; }, kPositive},
    {"PowerOfPi",
     [](Equations& m, Expression u, Expression) { return Power(Power(u, m.Pi()), 1 / m.Pi()); },
     [](Equations&, Expression u, Expression) { return u; },
     {Rational(7, 5)}},
    {"PowerOfSeries",
     [](Equations&, Expression u, Expression v) { return Power(u, v) * Power(u, -v); },
     [](Equations& m, Expression, Expression) { return m.Number(1); },
     {Rational(7, 5)}},
    {"PowerOfTwo",
     [](Equations& m, Expression u, Expression) {
       return Power(m.Number(2), u) * Power(m.Number(2), 1 - u);
     },
     [](Equations& m, Expression, Expression) { return m.Number(2); }, kAnywhere},
    {"LnOfPower",
     [](Equations&, Expression u, Expression) { return Function(kLn, Power(u, Rational(5, 3))); },
     [](Equations&, Expression u, Expression) { return Rational(5, 3) * Function(kLn, u); },
     kPositive},
    {"ExpOfLn",
     [](Equations&, Expression u, Expression) { return Function(kExp, Function(kLn, u)); },
     [](Equations&, Expression u, Expression) { return u; },
     {Rational(1, 1024), Rational(7, 5)}},
    {"LnOfExp",
     [](Equations&, Expression u, Expression) { return Function(kLn, Function(kExp, u)); },
     [](Equations&, Expression u, Expression) { return u; }, kAnywhere},
    {"ExpOfSum", [](Equations&, Expression u, Expression v) { return Function(kExp, u + v); },
     [](Equations&, Expression u, Expression v) { return Function(kExp, u) * Function(kExp, v); },
     kAnywhere},
    {"SinAndCosOnTheCircle",
     [](Equations&, Expression u, Expression) {
       return Square(Function(kSin, u)) + Square(Function(kCos, u));
     },
     [](Equations& m, Expression, Expression) { return m.Number(1); }, kAnywhere},
    {"SinOfDouble", [](Equations&, Expression u, Expression) { return Function(kSin, 2 * u); },
     [](Equations&, Expression u, Expression) { return 2 * Function(kSin, u) * Function(kCos, u); },
     kAnywhere},
    {"CosOfSum", [](Equations&, Expression u, Expression v) { return Function(kCos, u + v); },
     [](Equations&, Expression u, Expression v) {
       return Function(kCos, u) * Function(kCos, v) - Function(kSin, u) * Function(kSin, v);
     },
     kAnywhere},
    {"TanTimesCos",
     [](Equations&, Expression u, Expression) { return Function(kTan, u) * Function(kCos, u); },
     [](Equations&, Expression u, Expression) { return Function(kSin, u); }, kAnywhere},
    {"CotTimesSin",
     [](Equations&, Expression u, Expression) { return Function(kCot, u) * Function(kSin, u); },
     [](Equations&, Expression u, Expression) { return Function(kCos, u); },
     {Rational(-11, 7), Rational(1001, 700)}},
    {"AsinOfSin",
     [](Equations&, Expression u, Expression) { return Function(kAsin, Function(kSin, u)); },
     [](Equations&, Expression u, Expression) { return u; },
     {0, kTiny, Rational(-3, 4), Rational(9, 8)}},
    {"AcosOfCos",
     [](Equations&, Expression u, Expression) { return Function(kAcos, Function(kCos, u)); },
     [](Equations&, Expression u, Expression) { return u; },
     {Rational(1, 2), Rational(7, 3)}},
    {"AcosAndAsin",
     [](Equations&, Expression u, Expression) {
       return Function(kAcos, u / 4) + Function(kAsin, u / 4);
     },
     [](Equations& m, Expression, Expression) { return m.Pi() / 2; }, kNearZero},
    {"AtanOfTan",
     [](Equations&, Expression u, Expression) { return Function(kAtan, Function(kTan, u)); },
     [](Equations&, Expression u, Expression) { return u; },
     {0, kTiny, Rational(-3, 4), Rational(5, 4)}},
    {"AtanAndAcot",
     [](Equations&, Expression u, Expression) { return Function(kAtan, u) + Function(kAcot, u); },
     [](Equations& m, Expression, Expression) { return m.Pi() / 2; }, kPositive},
    {"AcotOfNegative",
     [](Equations&, Expression u, Expression) { return Function(kAtan, u) + Function(kAcot, u); },
     [](Equations& m, Expression, Expression) { return -m.Pi() / 2; },
     {Rational(-1, 1024), Rational(-22, 7), -kLarge}},
    {"CoshAndSinh",
     [](Equations&, Expression u, Expression) {
       return Square(Function(kCosh, u)) - Square(Function(kSinh, u));
     },
     [](Equations& m, Expression, Expression) { return m.Number(1); },
     {0, kTiny, Rational(-3, 4)}},
    {"ExpOfHyperbolics",
     [](Equations&, Expression u, Expression) { return Function(kCosh, u) + Function(kSinh, u); },
     [](Equations&, Expression u, Expression) { return Function(kExp, u); }, kNearZero},
    {"TanhTimesCosh",
     [](Equations&, Expression u, Expression) { return Function(kTanh, u) * Function(kCosh, u); },
     [](Equations&, Expression u, Expression) { return Function(kSinh, u); }, kAnywhere},
    {"CothTimesSinh",
     [](Equations&, Expression u, Expression) { return Function(kCoth, u) * Function(kSinh, u); },
     [](Equations&, Expression u, Expression) { return Function(kCosh, u); },
     {Rational(-11, 7), Rational(1001, 700)}},
    {"AsinhOfSinh",
     [](Equations&, Expression u, Expression) { return Function(kAsinh, Function(kSinh, u)); },
     [](Equations&, Expression u, Expression) { return u; }, kAnywhere},
    {"AcoshOfCosh",
     [](Equations&, Expression u, Expression) { return Function(kAcosh, Function(kCosh, u)); },
     [](Equations&, Expression u, Expression) { return u; },
     {Rational(1, 2), Rational(22, 7)}},
    {"AtanhOfTanh",
     [](Equations&, Expression u, Expression) { return Function(kAtanh, Function(kTanh, u)); },
     [](Equations&, Expression u, Expression) { return u; }, kNearZero},
    {"AcothOfCoth",
     [](Equations&, Expression u, Expression) { return Function(kAcoth, Function(kCoth, u)); },
     [](Equations&, Expression u, Expression) { return u; },
     {Rational(-3, 4), Rational(5, 4)}},
    {"AtanhAsLn", [](Equations&, Expression u, Expression) { return 2 * Function(kAtanh, u / 4); },
     [](Equations&, Expression u, Expression) { return Function(kLn, (4 + u) / (4 - u)); },
     kNearZero},
    {"AngleOfPolarCoordinates",
     [](Equations&, Expression u, Expression v) {
       return Function(kAtan2, v * Function(kSin, u), v * Function(kCos, u));
     },
     [](Equations&, Expression u, Expression) { return u; },
     {0, kTiny, Rational(-3), Rational(3)}},
    {"AngleAsAtan", [](Equations&, Expression u, Expression v) { return Function(kAtan2, u, v); },
     [](Equations&, Expression u, Expression v) { return Function(kAtan, u / v); }, kAnywhere},
};

/// u = point + t/2 - t^2/3 + t^3/4 - ... to degree 8; v = 2 + t/3 + t^2/4 + ... to degree 5
Expression U(Equations& m, const Rational& point)
{
  Expression sum = m.Number(Rational(-1, 9));
  for (int degree = 7; degree >= 1; --degree)
    sum = sum * m.Time() + Rational(degree % 2 == 0 ? -1 : 1, degree + 1);
  return sum * m.Time() + point;
}

Expression V(Equations& m)
{
  Expression sum = m.Number(Rational(1, 7));
  for (int degree = 4; degree >= 1; --degree) sum = sum * m.Time() + Rational(1, degree + 2);
  return sum * m.Time() + 2;
}

/// A scale near the point's distance from 0, where most functions have their singularities.
long ScaleExponent(const Rational& point)
{
  return sgn(point) != 0 && abs(point) < Rational(1, 2) && abs(point) > Rational(1, 4096) ? -12
                                                                                          : -3;
}

using IdentityAtBits = std::tuple<Identity, mpfr_prec_t>;

class Identities : public testing::TestWithParam<IdentityAtBits> {};

TEST_P(Identities, HoldTermByTerm)
{
  const auto& [identity, bits] = GetParam();
  for (const Rational& point : identity.points) {
    for (const bool backwards : {false, true}) {
      Equations m;
      const Expression u = U(m, point), v = V(m);
      m.SetDerivative(m.Variable("left", 0), identity.left(m, u, v));
      m.SetDerivative(m.Variable("right", 0), identity.right(m, u, v));
      const std::vector<PowerSeries> sides =
          support::RightHandSideTerms(m.Finished(), {.bits = bits,
                                                     .order = kOrder,
                                                     .scaleExponent = ScaleExponent(point),
                                                     .backwards = backwards});
      const double largest =
          std::max({0.0, support::LargestLog2(sides[0]), support::LargestLog2(sides[1])});
      for (int k = 0; k <= kOrder; ++k) {
        EXPECT_TRUE(support::IsWithin(largest + kLostBits - static_cast<double>(bits), sides[0][k],
                                      sides[1][k]))
            << identity.name << " at u = " << point << ", term " << k;
      }
    }
  }
}

std::string Name(const testing::TestParamInfo<IdentityAtBits>& info)
{
  return std::string(std::get<0>(info.param).name) + "_" + std::to_string(std::get<1>(info.param));
}

INSTANTIATE_TEST_SUITE_P(All, Identities,
                         testing::Combine(testing::ValuesIn(kIdentities),
                                          testing::Values(64, 113, 256, 1000)),
                         Name);

// erf u = integral of 2/sqrt(pi) exp(-u^2) u'
TEST(IdentityOfErf, DerivativeOfErfIsTheBell)
{
  for (const mpfr_prec_t bits : {64, 113, 256, 1000}) {
    for (const Rational& point : kAnywhere) {
      Equations m;
      const Expression u = U(m, point);
      m.SetDerivative(m.Variable("erf", 0), Function(kErf, u));
      m.SetDerivative(m.Variable("u", 0), u);
      m.SetDerivative(m.Variable("bell", 0),
                      2 / Function(kSqrt, m.Pi()) * Function(kExp, -(u * u)));
      const auto terms = support::RightHandSideTerms(
          m.Finished(), {.bits = bits, .order = kOrder, .scaleExponent = -3});
      const PowerSeries expected = support::Times(support::Derivative(terms[1]), terms[2]);
      const PowerSeries actual = support::Derivative(terms[0]);
      for (int k = 0; k <= kOrder; ++k) {
        EXPECT_TRUE(
            support::IsWithin(kLostBits - static_cast<double>(bits), actual[k], expected[k]))
            << point << " " << k;
      }
    }
  }
}

}  // namespace
}  // namespace varno::solve
