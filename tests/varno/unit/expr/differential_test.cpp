#include "varno/expr/differential.h"

#include <cmath>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/expr/sum.h"
#include "varno/expr/time.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class DifferentialTest : public testing::Test {
 protected:
  /// A variable with these terms. All step divisions h/k become 1, so that nothing is rounded.
  Ref VariableWithTerms(const std::vector<double>& terms) const
  {
    for (int k = 0; k < global->_NTERMS; ++k) mpf_set_ui(global->_STEPDIV[k], 1);
    return MakeVariable("y", terms.front(), Series({terms.begin() + 1, terms.end()}));
  }

  static testing::AssertionResult HasTerms(const Ref& y, const std::vector<Rational>& terms)
  {
    int k = 0;
    for (const Rational& term : terms) {
      const testing::AssertionResult same = IsExactly(term, TermOf(y, k));
      if (!same) return testing::AssertionFailure() << "term " << k << ": " << same.message();
      ++k;
    }
    return testing::AssertionSuccess();
  }

  /// y' = y
  static Ref Exponential(double start)
  {
    const Ref y = MakeVariable("y", start);
    VariableOf(y).SetRightHandSide(y);
    return y;
  }

  DifferentialTest() { global->SetStep(1.0); }

  ScopedGlobal global;
};

// --- Terms ---

TEST_F(DifferentialTest, AConstantRightHandSideGivesOneTermAndTheStep)
{
  global->SetStep(0.5);
  const Ref y = MakeVariable("y", 0.0, Constant(1));
  EXPECT_TRUE(HasTerms(y, {0, Rational(1, 2), 0, 0, 0}));
  EXPECT_TRUE(IsExactly(Rational(1, 2), ValueOf(y)));
}

TEST_F(DifferentialTest, TimeAsRightHandSideGivesHalfTheStep)
{
  global->SetStep(0.5);
  const Ref y = MakeVariable("y", 0.0, Ref(new Time));
  EXPECT_TRUE(HasTerms(y, {0, 0, Rational(1, 4), 0, 0}));
  EXPECT_TRUE(IsExactly(Rational(1, 4), ValueOf(y)));
}

TEST_F(DifferentialTest, TheExponentialHasPowersOfTheStepOverFactorials)
{
  for (const mp_bitcnt_t precisionBits : {80, 123, 1000}) {
    mpf_set_default_prec(precisionBits);
    const ScopedGlobal inner;
    mpf_set_default_prec(precisionBits);
    inner->SetTermCount(34);
    inner->SetStep(0.5);
    const Ref y = Exponential(1.0);
    Rational power = 1;
    for (int k = 0; k <= 33; ++k) {
      if (k > 0) power /= 2 * k;
      const Rational error = abs(Exact(TermOf(y, k)) - power);
      // Each of the k products is cut off, at more bits than the precision; the step has 64 bits.
      EXPECT_TRUE(error <= power * (k + 1) / Power(2, precisionBits)) << k << ' ' << precisionBits;
    }
  }
}

TEST_F(DifferentialTest, TheSumOfTheExponentialIsItsValueAStepLater)
{
  global->SetStep(0.5);
  // The sum goes 4 terms beyond the first that is small: the rest is below 1e-16.
  EXPECT_NEAR(mpf_get_d(ValueOf(Exponential(1.0))), std::exp(0.5), 1e-15);
}

TEST_F(DifferentialTest, ACoupledSystemGivesSineAndCosine)
{
  global->SetStep(0.5);
  const Ref s = MakeVariable("s", 0.0);
  const Ref c = MakeVariable("c", 1.0, Ref(kUnMinus, s));
  VariableOf(s).SetRightHandSide(c);
  for (int step = 1; step <= 20; ++step) {
    EXPECT_NEAR(mpf_get_d(ValueOf(s)), std::sin(step * 0.5), 1e-13) << step;
    EXPECT_NEAR(mpf_get_d(ValueOf(c)), std::cos(step * 0.5), 1e-13) << step;
    AcceptStep();
  }
}

// --- Start of a step ---

TEST_F(DifferentialTest, AnAcceptedStepGoesOnFromTheNewValue)
{
  const Ref y = MakeVariable("y", 2.0, Constant(1));
  EXPECT_TRUE(IsExactly(3, ValueOf(y)));
  AcceptStep();
  EXPECT_TRUE(HasTerms(y, {3, 1, 0}));
  EXPECT_TRUE(IsExactly(4, ValueOf(y)));
}

TEST_F(DifferentialTest, ARejectedStepIsRepeatedFromTheOldValue)
{
  const Ref y = MakeVariable("y", 2.0, Constant(1));
  for (const double h : {1.0, 0.5, 0.25}) {
    global->SetStep(h);
    EXPECT_TRUE(IsExactly(2 + Rational(h), ValueOf(y)));
    RejectStep();
  }
  EXPECT_TRUE(IsExactly(Rational(9, 4), ValueOf(y)));
  AcceptStep();
  EXPECT_TRUE(HasTerms(y, {Rational(9, 4)}));
}

TEST_F(DifferentialTest, TermsBelongToTheStepUnderWhichTheyAreComputed)
{
  const Ref y = MakeVariable("y", 2.0, Constant(1));
  ValueOf(y);
  EXPECT_EQ(VariableOf(y).TermStamp(), 0);
  EXPECT_GT(VariableOf(y).CachedTerms(), 1);
  AcceptStep();
  TermOf(y, 0);
  EXPECT_EQ(VariableOf(y).TermStamp(), 1);
  EXPECT_EQ(VariableOf(y).CachedTerms(), 1);
}

// --- The stopping rule of the sum ---

struct Sum {
  std::vector<double> terms;
  int added;  ///< terms that the sum takes
  int used;   ///< the order that it reports
};

TEST_F(DifferentialTest, TheSumEndsAfterFourSmallTermsInARow)
{
  const Sum rows[] = {
      {{1, 1, 1}, 7, 3},
      {{1}, 5, 1},
      {{1, 0, 0, 0, 1}, 9, 5},
      {{1, 0, 0, 0, 0, 1}, 5, 1},
      {{0, 0, 0, 0, 0, 0, 1}, 11, 7},
      {{-4, 0, 0, -2}, 8, 4},
      {{1, 0, 0, 0x1p-33, 0, 0x1p-34}, 8, 4},  // 2^-33 = 1.2e-10 is not small, 2^-34 is
  };
  for (const Sum& row : rows) {
    global->_WORK0 = 0;
    const Ref y = VariableWithTerms(row.terms);
    Rational sum = 0;
    for (int k = 0; k < row.added && k < static_cast<int>(row.terms.size()); ++k) {
      sum += Rational(row.terms[static_cast<std::size_t>(k)]);
    }
    EXPECT_TRUE(IsExactly(sum, ValueOf(y)));
    EXPECT_EQ(VariableOf(y).CachedTerms(), row.added);
    EXPECT_EQ(global->_WORK0, row.used);
  }
}

TEST_F(DifferentialTest, ATermOfExactlyTheBoundIsNotSmall)
{
  mpf_set_d(global->_ACCURACY, 0.25);
  global->_ZEROTERMS = 1;
  const Sum rows[] = {
      {{3, 1, 1}, 3, 2},         // 1 against (3 + 1) / 4, then 1 against 5/4
      {{3, 0.9375}, 2, 1},       // 15/16 against 63/64
      {{-3, -1, -1}, 3, 2},      // signs do not count
      {{3, -0.75, 0.25}, 3, 2},  // 3/4 against 9/16, 1/4 against 10/16
  };
  for (const Sum& row : rows) {
    global->_WORK0 = 0;
    const Ref y = VariableWithTerms(row.terms);
    ValueOf(y);
    EXPECT_EQ(VariableOf(y).CachedTerms(), row.added) << row.terms[1];
    EXPECT_EQ(global->_WORK0, row.used) << row.terms[1];
  }
}

TEST_F(DifferentialTest, SmallTermsAreAddedToo)
{
  mpf_set_d(global->_ACCURACY, 0.25);
  global->_ZEROTERMS = 2;
  EXPECT_TRUE(IsExactly(Rational(11, 8), ValueOf(VariableWithTerms({1, 0.25, 0.125, 8}))));
}

TEST_F(DifferentialTest, ASumOf0MakesNoTermSmallNotEven0)
{
  const Ref y = VariableWithTerms({0, 0, 0});
  EXPECT_TRUE(IsExactly(0, ValueOf(y)));
  EXPECT_EQ(VariableOf(y).CachedTerms(), 34);
  EXPECT_EQ(global->_WORK0, 34);
}

TEST_F(DifferentialTest, TheSumEndsAtTheTermCountAtTheLatest)
{
  global->SetTermCount(10);
  const Ref y = VariableWithTerms(std::vector<double>(20, 1.0));
  EXPECT_TRUE(IsExactly(10, ValueOf(y)));
  EXPECT_EQ(global->_WORK0, 10);
}

TEST_F(DifferentialTest, WithAllTermsInUseOnlySmallTermsAtTheEndCount)
{
  global->SetTermCount(10);
  global->_USEALLTERMS = true;
  const Sum rows[] = {
      {{1}, 10, 6},
      {{1, 0, 0, 0, 0, 0, 1}, 10, 7},
      {{1, 0, 0, 0, 0, 0, 0, 0, 1}, 10, 9},
      {{1, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 10, 10},
  };
  for (const Sum& row : rows) {
    global->_WORK0 = 0;
    const Ref y = VariableWithTerms(row.terms);
    EXPECT_TRUE(IsExactly(row.terms.size() == 1 ? 1 : 2, ValueOf(y)));
    EXPECT_EQ(VariableOf(y).CachedTerms(), row.added) << row.used;
    EXPECT_EQ(global->_WORK0, row.used);
  }
}

TEST_F(DifferentialTest, WithoutZeroTermsOrTermsNothingIsSummed)
{
  const struct {
    int termCount, zeroTerms;
  } rows[] = {{34, 0}, {34, -1}, {0, 4}, {-5, 4}};
  for (const auto& row : rows) {
    global->SetTermCount(row.termCount);
    global->_ZEROTERMS = row.zeroTerms;
    const Ref y = VariableWithTerms({5, 1});
    EXPECT_TRUE(IsExactly(0, ValueOf(y))) << row.termCount << ' ' << row.zeroTerms;
    EXPECT_EQ(VariableOf(y).CachedTerms(), 1) << row.termCount << ' ' << row.zeroTerms;
    EXPECT_EQ(global->_WORK0, 0);
  }
}

TEST_F(DifferentialTest, TheOrderIsOnlyRaised)
{
  const Ref y = MakeVariable("y", 1.0, Series({1.0, 2.0}));
  const Ref z = MakeVariable("z", 1.0, Series({1.0}));
  ValueOf(y);
  EXPECT_EQ(global->_WORK0, 3);
  ValueOf(z);
  EXPECT_EQ(global->_WORK0, 3);
}

// --- The last term ---

TEST_F(DifferentialTest, TheLastTermIsTheLastButOneOfThoseComputed)
{
  const Ref y = VariableWithTerms({2, 8, 32, 128});
  const struct {
    int computed, index;
    Rational term;
  } rows[] = {{0, -1, 99}, {1, 0, 2}, {2, 1, 8}, {3, 2, 32}, {4, 3, 128}};
  for (const auto& row : rows) {
    TermOf(y, row.computed);
    int k = 99;
    Mpf term(99.0);
    VariableOf(y).LastTerm(k, term);
    EXPECT_EQ(k, row.index);
    EXPECT_TRUE(IsExactly(row.term, term)) << row.computed;
  }
}

// --- Other forms ---

TEST_F(DifferentialTest, TheDerivativeIsTheRightHandSideItself)
{
  const Ref rightHandSide = Series({1.0});
  EXPECT_TRUE(MakeVariable("y", 0.0, rightHandSide)->Derivative() == rightHandSide);
}

TEST_F(DifferentialTest, StandsForItselfInTheIntegration)
{
  const Ref y = MakeVariable("y", 0.0);
  EXPECT_TRUE(y->Convert() == y);
}

TEST_F(DifferentialTest, TheInitialValueIsTheStartValue)
{
  EXPECT_TRUE(IsExactly(Rational(5, 2), InitValueOf(MakeVariable("y", 2.5))));
  EXPECT_TRUE(IsExactly(0, InitValueOf(Ref(new Differential("z", Ref())))));
}

TEST_F(DifferentialTest, PrintsAsItsNameInBrackets)
{
  const Ref y = MakeVariable("y", -0.5);
  EXPECT_EQ(TextOf(y), "[y]");
  VariableOf(y).SetRightHandSide(Ref(kMinus, y, Ref(new Time)));
  std::ostringstream out;
  VariableOf(y).DumpTree(out);
  EXPECT_EQ(out.str(), "#(TREEDUMP) DIF: \ty' = ([y] - t) & -5.00000000000e-01;\n");
}

}  // namespace
}  // namespace varno
