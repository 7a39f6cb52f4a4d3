#include "solve/series/mpfr_series.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/taylor_terms.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::PowerSeries;
using support::SeriesRequest;
using support::TermsOf;

/// All terms are these doubles, exactly.
void ExpectExactly(const std::vector<double>& expected, const PowerSeries& terms)
{
  ASSERT_EQ(expected.size(), terms.size());
  for (std::size_t k = 0; k < terms.size(); ++k)
    EXPECT_EQ(0, mpfr_cmp_d(terms[k], expected[k])) << "term " << k;
}

TEST(MpfrSeries, TimeHasTwoTerms)
{
  const SeriesRequest request{.order = 3, .time = 5, .scaleExponent = -2};
  ExpectExactly({5, 0.25, 0, 0}, TermsOf([](Equations& m) { return m.Time(); }, request));
}

TEST(MpfrSeries, ScaleIsNegativeBackwards)
{
  const SeriesRequest request{.order = 3, .time = 5, .scaleExponent = -2, .backwards = true};
  ExpectExactly({5, -0.25, 0, 0}, TermsOf([](Equations& m) { return m.Time(); }, request));
}

TEST(MpfrSeries, ConstantHasOneTerm)
{
  ExpectExactly({0.75, 0, 0},
                TermsOf([](Equations& m) { return m.Number(Rational(3, 4)); }, {.order = 2}));
}

// 1/(1 - t) = 1 + t + t^2 + ...
TEST(MpfrSeries, ReciprocalIsTheGeometricSeries)
{
  const auto reciprocal = [](Equations& m) { return 1 / (1 - m.Time()); };
  ExpectExactly({1, 1, 1, 1, 1, 1, 1}, TermsOf(reciprocal, {.order = 6}));
}

// (1 + t)^4 by its binomial coefficients
TEST(MpfrSeries, IntegerPowerIsThePolynomial)
{
  const auto power = [](Equations& m) { return support::Power(1 + m.Time(), 4); };
  ExpectExactly({1, 4, 6, 4, 1, 0, 0}, TermsOf(power, {.order = 6}));
}

// 1/(1 - t)^2 = sum of (k+1) t^k
TEST(MpfrSeries, NegativePowerDividesThePower)
{
  const auto power = [](Equations& m) { return support::Power(1 - m.Time(), -2); };
  ExpectExactly({1, 2, 3, 4, 5, 6, 7}, TermsOf(power, {.order = 6}));
}

// sqrt(1 + 2t + t^2) = 1 + t
TEST(MpfrSeries, SquareRootOfASquareIsThePolynomial)
{
  const auto root = [](Equations& m) {
    const Expression t = m.Time();
    return support::Function(Operation::kSqrt, 1 + 2 * t + t * t);
  };
  ExpectExactly({1, 1, 0, 0, 0, 0, 0}, TermsOf(root, {.order = 6}));
}

// (1 + t)^(3/2) (1 + t)^(1/2) = 1 + 2t + t^2
TEST(MpfrSeries, RealPowersMultiply)
{
  const auto product = [](Equations& m) {
    const Expression u = 1 + m.Time();
    return support::Power(u, Rational(3, 2)) * support::Power(u, Rational(1, 2));
  };
  ExpectExactly({1, 2, 1, 0, 0, 0, 0}, TermsOf(product, {.order = 6}));
}

// y' = y, y(0) = 1: term k is scale^k / k!
TEST(MpfrSeries, StatesFollowTheirDerivatives)
{
  Equations equations;
  const Expression y = equations.Variable("y", 1);
  equations.SetDerivative(y, y);
  const Model& model = equations.Finished();
  const PowerSeries terms =
      support::RightHandSideTerms(model, {.bits = 256, .order = 40, .scaleExponent = 3})[0];
  Real expected(300);
  mpfr_set_ui(expected, 1, MPFR_RNDN);
  for (unsigned k = 1; k < terms.size(); ++k) {
    mpfr_mul_2ui(expected, expected, 3, MPFR_RNDN);
    mpfr_div_ui(expected, expected, k, MPFR_RNDN);
    EXPECT_TRUE(support::IsWithin(support::Log2(expected) - 250, terms[k], expected))
        << "term " << k;
  }
}

// The same terms whether they are asked for at once or piece by piece, also beyond the usual order
TEST(MpfrSeries, ExtendsWithoutChangingTerms)
{
  const Model model = support::Quadrature([](Equations& m) {
    return support::Function(Operation::kAtan2, m.Time(), 2 + m.Time()) +
           support::Power(2 + m.Time(), Rational(1, 3));
  });
  const Tape tape = Compile(model);
  const auto atOnce = std::make_unique<MpfrSeries>(tape, 128, 4, false),
             piecewise = std::make_unique<MpfrSeries>(tape, 128, 4, false);
  Real time(128);
  mpfr_set_d(time, 0.5, MPFR_RNDN);
  for (Series* series : {atOnce.get(), piecewise.get()})
    series->Begin(time, std::vector<Real>(1, Real(128)), false, 0);
  atOnce->ExtendTo(30);
  for (int order = 0; order <= 30; order += 3) piecewise->ExtendTo(order);
  piecewise->ExtendTo(30);
  Real a(128), b(128);
  for (LineId line = 0; line < tape.lines.size(); ++line) {
    for (int k = 0; k <= 30; ++k) {
      atOnce->Term(line, k, a);
      piecewise->Term(line, k, b);
      EXPECT_NE(mpfr_equal_p(a, b), 0) << "line " << line << ", term " << k;
    }
  }
}

// A second Begin leaves nothing of the first: terms about 2 are those of a new series.
TEST(MpfrSeries, BeginsAnew)
{
  const Model model = support::Quadrature(
      [](Equations& m) { return support::Function(Operation::kErf, m.Time()); });
  const Tape tape = Compile(model);
  const auto used = std::make_unique<MpfrSeries>(tape, 128, 10, false),
             fresh = std::make_unique<MpfrSeries>(tape, 128, 10, false);
  const std::vector<Real> states(1, Real(128));
  Real time(128), a(128), b(128);
  used->Begin(time, states, true, 5);
  used->ExtendTo(25);
  mpfr_set_ui(time, 2, MPFR_RNDN);
  for (Series* series : {used.get(), fresh.get()}) {
    series->Begin(time, states, false, -1);
    EXPECT_EQ(0, series->Order());
    series->ExtendTo(12);
  }
  for (int k = 0; k <= 12; ++k) {
    used->Term(tape.rightHandSides[0], k, a);
    fresh->Term(tape.rightHandSides[0], k, b);
    EXPECT_NE(mpfr_equal_p(a, b), 0) << "term " << k;
  }
}

// 1 + t + ... + t^6 at 1/2 is 127/64.
TEST(MpfrSeries, SumsAtAnOffset)
{
  const Model model = support::Quadrature([](Equations& m) { return 1 / (1 - m.Time()); });
  const Tape tape = Compile(model);
  const auto series = std::make_unique<MpfrSeries>(tape, 64, 6, false);
  series->Begin(Real(64), std::vector<Real>(1, Real(64)), false, 0);
  series->ExtendTo(6);
  Real offset(64), sum(64);
  mpfr_set_d(offset, 0.5, MPFR_RNDN);
  series->Sum(tape.rightHandSides[0], offset, sum);
  EXPECT_EQ(0, mpfr_cmp_d(sum, 127.0 / 64));
}

TEST(MpfrSeries, TellsMagnitudesBeyondDoubles)
{
  const Model model = support::Quadrature(
      [](Equations& m) { return support::Power(m.Number(2), 3000) * m.Time(); });
  const Tape tape = Compile(model);
  const auto series = std::make_unique<MpfrSeries>(tape, 64, 6, false);
  Real time(64);
  mpfr_set_ui(time, 3, MPFR_RNDN);
  series->Begin(time, std::vector<Real>(1, Real(64)), false, -7000);
  series->ExtendTo(2);
  const LineId line = tape.rightHandSides[0];
  EXPECT_NEAR(3000 + std::log2(3), series->Log2(line, 0), 1e-9);
  EXPECT_NEAR(-4000, series->Log2(line, 1), 1e-9);
  EXPECT_EQ(-INFINITY, series->Log2(line, 2));
}

// ---------------------------------------------------------------------------------------------
// No value, or no series

struct Undefined {
  const char* name;
  Expression (*function)(Equations&);
  Outcome outcome;
};

class MpfrSeriesUndefined : public testing::TestWithParam<Undefined> {};

TEST_P(MpfrSeriesUndefined, IsTold)
{
  const Model model = support::Quadrature(GetParam().function);
  const Tape tape = Compile(model);
  const auto series = std::make_unique<MpfrSeries>(tape, 64, 6, false);
  try {
    series->Begin(Real(64), std::vector<Real>(1, Real(64)), false, 0);
    FAIL() << "no error";
  } catch (const DomainError& error) {
    EXPECT_EQ(GetParam().outcome, error.outcome);
  }
}

Expression Of(Operation function, Expression u)
{
  return support::Function(function, u);
}

const Undefined kUndefined[] = {
    {"Quotient", [](Equations& m) { return 1 / m.Time(); }, Outcome::kUndefined},
    {"ZeroByZero", [](Equations& m) { return Of(Operation::kSin, m.Time()) / m.Time(); },
     Outcome::kUndefined},
    {"LnOfZero", [](Equations& m) { return Of(Operation::kLn, m.Time()); }, Outcome::kUndefined},
    {"LnOfNegative", [](Equations& m) { return Of(Operation::kLn, m.Time() - 1); },
     Outcome::kUndefined},
    {"RootOfZero", [](Equations& m) { return Of(Operation::kSqrt, m.Time()); }, Outcome::kNoSeries},
    {"RootOfNegative", [](Equations& m) { return Of(Operation::kSqrt, m.Time() - 1); },
     Outcome::kUndefined},
    {"CubeRootOfZero", [](Equations& m) { return Of(Operation::kCbrt, m.Time()); },
     Outcome::kNoSeries},
    {"PowerOfZero", [](Equations& m) { return support::Power(m.Time(), Rational(5, 2)); },
     Outcome::kNoSeries},
    {"PowerOfNegative", [](Equations& m) { return support::Power(m.Time() - 1, Rational(5, 2)); },
     Outcome::kUndefined},
    {"NegativePowerOfZero", [](Equations& m) { return support::Power(m.Time(), -3); },
     Outcome::kUndefined},
    {"AsinBeyondOne", [](Equations& m) { return Of(Operation::kAsin, m.Time() + 2); },
     Outcome::kUndefined},
    {"AsinOfOne", [](Equations& m) { return Of(Operation::kAsin, m.Time() + 1); },
     Outcome::kNoSeries},
    {"AcosBeyondOne", [](Equations& m) { return Of(Operation::kAcos, m.Time() - 2); },
     Outcome::kUndefined},
    {"AcoshOfZero", [](Equations& m) { return Of(Operation::kAcosh, m.Time()); },
     Outcome::kUndefined},
    {"AcoshOfOne", [](Equations& m) { return Of(Operation::kAcosh, m.Time() + 1); },
     Outcome::kNoSeries},
    {"AtanhOfOne", [](Equations& m) { return Of(Operation::kAtanh, m.Time() + 1); },
     Outcome::kUndefined},
    {"AtanhBeyondOne", [](Equations& m) { return Of(Operation::kAtanh, m.Time() - 2); },
     Outcome::kUndefined},
    {"AcothOfOne", [](Equations& m) { return Of(Operation::kAcoth, m.Time() + 1); },
     Outcome::kUndefined},
    {"AcothInside", [](Equations& m) { return Of(Operation::kAcoth, m.Time()); },
     Outcome::kUndefined},
    {"CotOfZero", [](Equations& m) { return Of(Operation::kCot, m.Time()); }, Outcome::kUndefined},
    {"CothOfZero", [](Equations& m) { return Of(Operation::kCoth, m.Time()); },
     Outcome::kUndefined},
    {"AngleOfOrigin",
     [](Equations& m) { return support::Function(Operation::kAtan2, m.Time(), 2 * m.Time()); },
     Outcome::kUndefined},
    {"TooLarge",
     [](Equations& m) { return Of(Operation::kExp, Of(Operation::kExp, m.Time() + 100)); },
     Outcome::kOutOfRange},
};

INSTANTIATE_TEST_SUITE_P(All, MpfrSeriesUndefined, testing::ValuesIn(kUndefined),
                         [](const auto& info) { return std::string(info.param.name); });

// asin(u) takes the root of 1 - u^2, which is -3 here: nobody has written that.
TEST(MpfrSeriesDomain, NamesTheArgumentThatWasWritten)
{
  const Model model =
      support::Quadrature([](Equations& m) { return Of(Operation::kAsin, m.Time() + 2); });
  const Tape tape = Compile(model);
  const auto series = MakeSeries(tape, 64, 6);
  try {
    series->Begin(Real(64), std::vector<Real>(1, Real(64)), false, 0);
    FAIL() << "no error";
  } catch (const DomainError& error) {
    EXPECT_EQ(0, mpfr_cmp_si(static_cast<mpfr_srcptr>(error.argument), 2));
  }
}

// y' = sin t + t: without sin, its partner and nothing else, the line is t. What is left out is not
// computed either: 1/t has no value at 0.
TEST(MpfrSeries, LinesLeftOutAreZero)
{
  Equations m;
  const Expression t = m.Time();
  m.SetDerivative(m.Variable("y", 1), support::Function(Operation::kSin, t) + 1 / t + t);
  const Tape tape = Compile(m.Finished());
  const auto series = MakeSeries(tape, 100, 5);
  std::vector<bool> leftOut;
  for (const Line& line : tape.lines)
    leftOut.push_back(line.kind == LineKind::kIntegralOfProduct ||
                      line.kind == LineKind::kQuotient);
  Real time(2), offset(2), value(100);
  mpfr_set_ui(offset, 1, MPFR_RNDN);
  const std::vector<Real> states(1, offset);

  series->LeaveOut(leftOut, {});
  series->Begin(time, states, false, 0);
  series->ExtendTo(5);
  series->Sum(0, offset, value);
  EXPECT_EQ(1.5, value.ToDouble());
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    for (int k = 0; leftOut[id] && k <= 5; ++k) EXPECT_EQ(-INFINITY, series->Log2(id, k));
  }

  series->LeaveOut(std::vector<bool>(leftOut.size(), false), {});
  EXPECT_THROW(series->Begin(time, states, false, 0), DomainError);
}

// y' = t tanh(1000 t - 1) + 1/t with tanh held at -3 and without 1/t: -3 t.
TEST(MpfrSeries, HeldLinesAreConstants)
{
  for (const mpfr_prec_t bits : {100, 200, 1000, 5000}) {
    Equations m;
    const Expression t = m.Time();
    const Expression switching = support::Function(Operation::kTanh, 1000 * t - 1);
    m.SetDerivative(m.Variable("y", 1), t * switching + 1 / t);
    const Tape tape = Compile(m.Finished());
    const auto series = MakeSeries(tape, bits, 5);
    std::vector<bool> leftOut;
    HeldLines held;
    for (const Line& line : tape.lines) {
      const auto id = static_cast<LineId>(leftOut.size());
      leftOut.push_back(line.kind == LineKind::kIntegralOfProduct ||
                        line.kind == LineKind::kIntegralOfQuotient ||
                        line.kind == LineKind::kQuotient);
      if (line.kind == LineKind::kIntegralOfQuotient)
        mpfr_set_si(held.try_emplace(id, 50).first->second, -3, MPFR_RNDN);
    }
    ASSERT_EQ(1U, held.size());
    Real time(2), offset(2), value(100);
    mpfr_set_ui(offset, 1, MPFR_RNDN);
    series->LeaveOut(leftOut, held);
    series->Begin(time, std::vector<Real>(1, offset), false, 0);
    series->ExtendTo(5);
    series->Sum(0, offset, value);
    EXPECT_EQ(1 - 1.5, value.ToDouble());
    const LineId line = held.begin()->first;
    EXPECT_NEAR(std::log2(3), series->Log2(line, 0), 1e-8);
    for (int k = 1; k <= 5; ++k) EXPECT_EQ(-INFINITY, series->Log2(line, k));
  }
}

}  // namespace
}  // namespace varno::solve
