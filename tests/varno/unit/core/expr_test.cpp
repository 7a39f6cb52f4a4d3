#include "varno/core/expr.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/expr/differential.h"
#include "varno/expr/equation.h"
#include "varno/expr/number.h"
#include "varno/expr/sum.h"
#include "varno/expr/un_op.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;
using Indices = std::vector<int>;

class ExprRefTest : public testing::Test {
 protected:
  ScopedGlobal global;
  const int aliveBefore = SeriesNode::alive;
};

TEST_F(ExprRefTest, NullGivesTheEmptyExpressionWhoseCountRises)
{
  const int before = Expr::Nothing->RefCount();
  {
    const Ref fromNull(nullptr);
    const Ref empty;
    EXPECT_EQ(&*fromNull, Expr::Nothing);
    EXPECT_TRUE(fromNull.IsEmpty());
    EXPECT_TRUE(fromNull == empty);
    EXPECT_EQ(Expr::Nothing->RefCount(), before + 2);
  }
  EXPECT_EQ(Expr::Nothing->RefCount(), before);
}

TEST_F(ExprRefTest, EachHandleCounts)
{
  auto* const node = new SeriesNode({});
  EXPECT_EQ(node->RefCount(), 0);
  Ref first(node);
  EXPECT_EQ(node->RefCount(), 1);
  {
    const Ref second(first);
    const Ref third(node);
    EXPECT_EQ(node->RefCount(), 3);
  }
  EXPECT_EQ(node->RefCount(), 1);
  EXPECT_EQ(SeriesNode::alive, aliveBefore + 1);
  first = Ref();
  EXPECT_EQ(SeriesNode::alive, aliveBefore);
}

TEST_F(ExprRefTest, AssignmentReleasesTheOldNode)
{
  Ref handle = Series({1.0});
  const Ref other = Series({2.0});
  handle = other;
  EXPECT_TRUE(handle == other);
  EXPECT_EQ(other->RefCount(), 2);
  EXPECT_EQ(SeriesNode::alive, aliveBefore + 1);
}

TEST_F(ExprRefTest, AssignmentToItselfKeepsTheNode)
{
  Ref handle = Series({1.0});
  const Ref& same = handle;
  handle = same;
  EXPECT_EQ(handle->RefCount(), 1);
  EXPECT_EQ(SeriesNode::alive, aliveBefore + 1);
}

TEST_F(ExprRefTest, AssignmentMayTakeANodeThatOnlyTheOldNodeHolds)
{
  Ref handle(new Differential("y", Series({5.0})));
  handle = VariableOf(handle).RightHandSide();
  EXPECT_EQ(handle->RefCount(), 1);
  EXPECT_TRUE(IsExactly(5, InitValueOf(handle)));
}

TEST_F(ExprRefTest, MovingLeavesAnEmptyHandle)
{
  Ref source = Series({1.0});
  Ref target(std::move(source));
  EXPECT_TRUE(source.IsEmpty());
  EXPECT_EQ(target->RefCount(), 1);
  source = std::move(target);
  EXPECT_TRUE(target.IsEmpty());
  EXPECT_EQ(source->RefCount(), 1);
  EXPECT_EQ(SeriesNode::alive, aliveBefore + 1);
}

TEST_F(ExprRefTest, EqualityIsIdentityOfNodes)
{
  const Ref one = Constant(1.0);
  const Ref same(one);
  const Ref otherOne = Constant(1.0);
  EXPECT_TRUE(one == same);
  EXPECT_FALSE(one == otherOne);
}

TEST_F(ExprRefTest, ANodeReleasesItsOperands)
{
  Ref operand = Series({1.0});
  Ref sum(new Plus(operand, operand));
  EXPECT_EQ(operand->RefCount(), 3);
  operand = Ref();
  EXPECT_EQ(SeriesNode::alive, aliveBefore + 1);
  sum = Ref();
  EXPECT_EQ(SeriesNode::alive, aliveBefore);
}

TEST_F(ExprRefTest, AVeryDeepTreeIsDeletedWithoutRecursion)
{
  global->SetTermCount(0);
  Ref tree = Series({});
  for (int depth = 0; depth < 150'000; ++depth) tree = Ref(new UnMinus(tree));
  tree = Ref();
  EXPECT_EQ(SeriesNode::alive, aliveBefore);
}

TEST_F(ExprRefTest, SharedSubtreesAreDeletedOnce)
{
  // 2^100 paths lead to the leaf.
  Ref tree = Series({});
  for (int depth = 0; depth < 100; ++depth) tree = Ref(new Plus(tree, tree));
  tree = Ref();
  EXPECT_EQ(SeriesNode::alive, aliveBefore);
}

// --- Terms ---

class ExprTest : public testing::Test {
 protected:
  ScopedGlobal global;
  const Ref node = Series({1.0, 2.0, 4.0});
  SeriesNode& series = SeriesOf(node);
};

TEST_F(ExprTest, ANewNodeComputesUnderTheStepNumberOfItsBirth)
{
  global->_STEPNO = 7;
  const Ref born = Series({1.0});
  EXPECT_TRUE(IsExactly(1, TermOf(born, 0)));
  EXPECT_TRUE(IsExactly(1, ValueOf(born)));
  EXPECT_EQ(SeriesOf(born).computedTerms, Indices{0});
  EXPECT_EQ(SeriesOf(born).computedValues, 1);
}

TEST_F(ExprTest, ANewNodeIsNotSteady)
{
  EXPECT_FALSE(node->IsSteady());
}

TEST_F(ExprTest, EachTermIsComputedOncePerStep)
{
  for (const int k : {0, 1, 1, 0, 2, 1, 2}) {
    EXPECT_TRUE(IsExactly(1 << k, TermOf(node, k))) << k;
  }
  EXPECT_EQ(series.computedTerms, (Indices{0, 1, 2}));
}

TEST_F(ExprTest, ANewStepNumberForgetsTheTerms)
{
  TermOf(node, 0);
  TermOf(node, 1);
  AcceptStep();
  TermOf(node, 0);
  RejectStep();
  TermOf(node, 0);
  EXPECT_EQ(series.computedTerms, (Indices{0, 1, 0, 0}));
}

TEST_F(ExprTest, OnlyTheTermAskedForIsComputed)
{
  EXPECT_TRUE(IsExactly(4, TermOf(node, 2)));
  EXPECT_EQ(series.computedTerms, Indices{2});
}

TEST_F(ExprTest, TheTermAtTheTermCountIsTheLastOne)
{
  const int last = global->_NTERMS;
  EXPECT_TRUE(IsExactly(0, TermOf(node, last)));
  try {
    TermOf(node, last + 1);
    FAIL() << "no exception";
  } catch (const std::overflow_error& error) {
    EXPECT_STREQ(error.what(), "Order overflow");
  }
}

TEST_F(ExprTest, AVariableAsksForNoTermBeyondTheTermCount)
{
  const Ref y = MakeVariable("y", 1.0, node);
  EXPECT_THROW(TermOf(y, global->_NTERMS + 1), std::overflow_error);
  EXPECT_TRUE(series.computedTerms.empty());
}

TEST_F(ExprTest, ATermOfAnExpressionWithoutTermsEndsTheRun)
{
  for (const Ref& without : {Ref(), Ref(new Equation("y", 0))}) {
    EXPECT_EXIT(TermOf(without, 0), testing::ExitedWithCode(1),
                ExactText("#(ERR) An expression without a value was used (a step function, or a "
                          "derivative that does not exist)\n"));
  }
}

// --- Value ---

TEST_F(ExprTest, TheValueIsComputedOncePerStep)
{
  EXPECT_TRUE(IsExactly(7, ValueOf(node)));
  EXPECT_TRUE(IsExactly(7, ValueOf(node)));
  EXPECT_EQ(series.computedValues, 1);
  AcceptStep();
  EXPECT_TRUE(IsExactly(7, ValueOf(node)));
  EXPECT_EQ(series.computedValues, 2);
}

TEST_F(ExprTest, TheResetFlagForcesOneComputation)
{
  ValueOf(node);
  global->_RESET_FLAG = true;
  ValueOf(node);
  EXPECT_FALSE(global->_RESET_FLAG);
  EXPECT_EQ(series.computedValues, 2);
  ValueOf(node);
  EXPECT_EQ(series.computedValues, 2);
}

TEST_F(ExprTest, TheResetFlagDoesNotReachTheOperands)
{
  const Ref sum(new Plus(node, node));
  ValueOf(sum);
  global->_RESET_FLAG = true;
  EXPECT_TRUE(IsExactly(14, ValueOf(sum)));
  EXPECT_EQ(series.computedValues, 1);
}

TEST_F(ExprTest, TheFirstValueOfAStepTakesTheResetFlagToo)
{
  global->_RESET_FLAG = true;
  ValueOf(node);
  EXPECT_FALSE(global->_RESET_FLAG);
}

TEST_F(ExprTest, ANodeIsSteadyWhenItsValueMovesByLessThanTheAccuracy)
{
  global->_STEADYSTOP = 3;
  mpf_set_d(global->_ACCURACY, 0.125);
  const struct {
    double start;
    bool steady;
  } rows[] = {{7.0, true},          {7.0 + 0.0625, true}, {7.0 - 0.0625, true},
              {7.0 + 0.125, false}, {7.0 - 0.125, false}, {8.0, false}};
  for (const auto& row : rows) {
    AcceptStep();
    series.SetStartValue(row.start);
    ValueOf(node);
    EXPECT_EQ(node->IsSteady(), row.steady) << row.start;
  }
}

TEST_F(ExprTest, WithoutASteadyStopNoNodeIsSteady)
{
  series.SetStartValue(7.0);
  ValueOf(node);
  EXPECT_FALSE(node->IsSteady());

  global->_STEADYSTOP = 1;
  AcceptStep();
  ValueOf(node);
  EXPECT_TRUE(node->IsSteady());
  global->_STEADYSTOP = 0;
  EXPECT_TRUE(node->IsSteady());
  AcceptStep();
  ValueOf(node);
  EXPECT_FALSE(node->IsSteady());
}

// --- Initial value, derivative, conversion ---

TEST_F(ExprTest, TheInitialValueIsComputedAtEveryRequest)
{
  EXPECT_TRUE(IsExactly(1, InitValueOf(node)));
  EXPECT_TRUE(IsExactly(1, InitValueOf(node)));
  EXPECT_EQ(series.computedInitialValues, 2);
}

TEST_F(ExprTest, TheDerivativeIsBuiltOnce)
{
  const Ref sum(new Plus(MakeVariable("y", 1.0, node), MakeVariable("z", 1.0, node)));
  const Ref derivative = sum->Derivative();
  EXPECT_EQ(TextOf(derivative), "(series + series)");
  EXPECT_TRUE(sum->Derivative() == derivative);
}

TEST_F(ExprTest, WhereThereIsNoDerivativeItIsEmptyAndAskedForAgain)
{
  EXPECT_TRUE(node->Derivative().IsEmpty());
  EXPECT_TRUE(node->Derivative().IsEmpty());
  EXPECT_EQ(series.derivativesAskedFor, 2);
}

TEST_F(ExprTest, EveryConversionIsANewOneAndTheLastIsKept)
{
  const int before = SeriesNode::alive;
  const Ref first = node->Convert();
  {
    const Ref second = node->Convert();
    EXPECT_FALSE(first == second);
    EXPECT_EQ(SeriesNode::alive, before + 2);
  }
  EXPECT_EQ(first->RefCount(), 1);
  EXPECT_EQ(SeriesNode::alive, before + 2);
  node->Convert();
  EXPECT_EQ(SeriesNode::alive, before + 2);
}

TEST_F(ExprTest, ConversionToItselfDoesNotKeepANodeAlive)
{
  const Ref number = Constant(1.0);
  EXPECT_TRUE(number->Convert() == number);
  EXPECT_EQ(number->RefCount(), 1);
}

}  // namespace
}  // namespace varno
