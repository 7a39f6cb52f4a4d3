#include <cmath>
#include <csignal>
#include <string>
#include <typeindex>
#include <typeinfo>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/expr.h"
#include "varno/expr/differential.h"
#include "varno/expr/divide.h"
#include "varno/expr/function.h"
#include "varno/expr/multiply.h"
#include "varno/expr/number.h"
#include "varno/expr/sum.h"
#include "varno/expr/un_op.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

/// What became of an operation over a constant and the variable x.
enum class Shape { kNode, kTheVariable, kItsNegation, kZero };

const char* NameOf(Shape shape)
{
  static constexpr const char* kNames[] = {"a node", "the variable", "its negation", "zero"};
  return kNames[static_cast<int>(shape)];
}

std::ostream& operator<<(std::ostream& out, Shape shape)
{
  return out << NameOf(shape);
}

std::type_index ClassOf(const Ref& handle)
{
  const Expr& node = *handle;
  return typeid(node);
}

class BuildTest : public testing::Test {
 protected:
  /// 2^-n
  static double Part(int n) { return std::ldexp(1.0, -n); }

  Shape ShapeOf(const Ref& built) const
  {
    if (built == x) return Shape::kTheVariable;
    if (built->Type() == kNumber && InitValueOf(built).Sign() == 0) return Shape::kZero;
    if (ClassOf(built) == typeid(UnMinus) && TextOf(built) == "(-[x])") return Shape::kItsNegation;
    return Shape::kNode;
  }

  Shape ConstantFirst(ExprType type, double constant) const
  {
    return ShapeOf(Ref(type, Constant(constant), x));
  }
  Shape ConstantSecond(ExprType type, double constant) const
  {
    return ShapeOf(Ref(type, x, Constant(constant)));
  }

  ScopedGlobal global;
  const Ref x = MakeVariable("x", 0.0);
};

// --- Nodes ---

TEST_F(BuildTest, ABinaryKindBuildsItsNode)
{
  const struct {
    int code;
    std::type_index node;
    const char* text;
  } rows[] = {
      {1, typeid(Plus), "([x] + [y])"},
      {2, typeid(Minus), "([x] - [y])"},
      {3, typeid(Multiply), "([x] * [y])"},
      {4, typeid(Divide), "([x] / [y])"},
  };
  const Ref y = MakeVariable("y", 0.0);
  for (const auto& row : rows) {
    const Ref built(ExprType{row.code}, x, y);
    EXPECT_EQ(ClassOf(built), row.node) << row.text;
    EXPECT_EQ(built->Type(), row.code);
    EXPECT_EQ(built->RefCount(), 1) << row.text;
    EXPECT_EQ(TextOf(built), row.text);
  }
}

TEST_F(BuildTest, AUnaryKindBuildsItsNode)
{
  const struct {
    int code;
    std::type_index node;
    const char* text;
  } rows[] = {
      {5, typeid(UnMinus), "(-[x])"},        {11, typeid(Sin), "sin([x])"},
      {12, typeid(Cos), "cos([x])"},         {13, typeid(Tan), "tan([x])"},
      {14, typeid(Cotan), "cotan([x])"},     {15, typeid(ASin), "asin([x])"},
      {16, typeid(ACos), "acos([x])"},       {17, typeid(ATan), "atan([x])"},
      {18, typeid(ACotan), "acotan([x])"},   {19, typeid(Sinh), "sinh([x])"},
      {20, typeid(Cosh), "cosh([x])"},       {21, typeid(Tanh), "tanh([x])"},
      {22, typeid(Cotanh), "cotanh([x])"},   {23, typeid(ASinh), "asinh([x])"},
      {24, typeid(ACosh), "acosh([x])"},     {25, typeid(ATanh), "atanh([x])"},
      {26, typeid(ACotanh), "acotanh([x])"}, {27, typeid(Sqrt), "sqrt([x])"},
      {28, typeid(Exp), "exp([x])"},         {29, typeid(Ln), "ln([x])"},
      {30, typeid(Trunc), "trunc([x])"},
  };
  for (const auto& row : rows) {
    const int handlesBefore = x->RefCount();
    const Ref built(ExprType{row.code}, x);
    EXPECT_EQ(ClassOf(built), row.node) << row.text;
    EXPECT_EQ(built->Type(), row.code);
    EXPECT_EQ(built->RefCount(), 1) << row.text;
    EXPECT_EQ(x->RefCount(), handlesBefore + 1) << row.text;
    EXPECT_EQ(TextOf(built), row.text);
  }
}

TEST_F(BuildTest, ANegationOfANegationStays)
{
  EXPECT_EQ(TextOf(Ref(kUnMinus, Ref(kUnMinus, x))), "(-(-[x]))");
}

// --- Folding ---

TEST_F(BuildTest, TwoNumbersFoldWhateverTheSimplification)
{
  const struct {
    ExprType type;
    double a, b;
    Rational folded;
  } rows[] = {
      {kPlus, 7, 2, 9},      {kMinus, 7, 2, 5},
      {kMultiply, 7, 2, 14}, {kDivide, 7, 2, Rational(7, 2)},
      {kMinus, 0, 3, -3},    {kMultiply, -1, 3, -3},
      {kDivide, 3, -1, -3},  {kPlus, 0, 0, 0},
      {kDivide, 0, 5, 0},
  };
  for (const bool simplify : {true, false}) {
    global->_SIMPLIFYSMALL = simplify;
    for (const auto& row : rows) {
      const Ref built(row.type, Constant(row.a), Constant(row.b));
      EXPECT_EQ(built->Type(), kNumber);
      EXPECT_TRUE(IsExactly(row.folded, InitValueOf(built))) << row.a << ' ' << row.b;
    }
  }
}

TEST_F(BuildTest, NoTreeOfNumbersAloneIsLeft)
{
  // (1 + 2) * 3 - 4 / (5 - 7) = 11
  const Ref product(kMultiply, Ref(kPlus, Constant(1), Constant(2)), Constant(3));
  const Ref quotient(kDivide, Constant(4), Ref(kMinus, Constant(5), Constant(7)));
  const Ref built(kMinus, product, quotient);
  EXPECT_EQ(built->Type(), kNumber);
  EXPECT_TRUE(IsExactly(11, InitValueOf(built)));
}

TEST_F(BuildTest, NumbersFoldAtThePrecisionInForce)
{
  for (const mp_bitcnt_t precisionBits : {80, 123, 1000}) {
    mpf_set_default_prec(precisionBits);
    const Mpf third = InitValueOf(Ref(kDivide, Constant(1), Constant(3)));
    const Rational error = abs(Exact(third) - Rational(1, 3));
    EXPECT_LT(error.get_d(), std::ldexp(1.0, -static_cast<int>(precisionBits))) << precisionBits;
  }
}

TEST_F(BuildTest, AFoldedNumberPrintsAsOneNumber)
{
  EXPECT_EQ(TextOf(Ref(kPlus, Constant(1), Constant(2))), " 3.00000000000e+00");
}

TEST_F(BuildTest, FoldingADivisionBy0EndsTheProcessByGmpsSignal)
{
  const auto divide = [] {
    std::signal(SIGFPE, SIG_DFL);
    return Ref(kDivide, Constant(1), Constant(0));
  };
  EXPECT_EXIT(divide(), testing::KilledBySignal(SIGFPE), "");
}

TEST_F(BuildTest, AUnaryKindOfANumberIsTheNumberItGives)
{
  // atanh is not the textbook's: x + x^3/3 + x^5/(3 5) + x^7/(3 5 7) + ... with x = 1/4
  const double quarterSeries =
      0.25 + Part(6) / 3 + Part(10) / 15 + Part(14) / 105 + Part(18) / 945 + Part(22) / 10395;
  const struct {
    ExprType type;
    double x;
    double value;
  } rows[] = {
      {kUnMinus, 2, -2},
      {kSin, 0, 0},
      {kSin, 0.5, std::sin(0.5)},
      {kCos, 0.5, std::cos(0.5)},
      {kTan, 0.5, std::tan(0.5)},
      {kCotan, 0.5, 1 / std::tan(0.5)},
      {kASin, 0.25, std::asin(0.25)},
      {kACos, 0.25, std::acos(0.25)},
      {kATan, 0.25, std::atan(0.25)},
      {kACotan, 0.25, std::atan(4.0)},
      {kSinh, 0.5, std::sinh(0.5)},
      {kCosh, 0.5, std::cosh(0.5)},
      {kTanh, 0.5, std::tanh(0.5)},
      {kCotanh, 0.5, 1 / std::tanh(0.5)},
      {kASinh, 0.5, std::asinh(0.5)},
      {kACosh, 1.5, std::acosh(1.5)},
      {kATanh, 0.25, quarterSeries},
      {kACotanh, 4, quarterSeries},
      {kSqrt, 2, std::sqrt(2)},
      {kExp, 0.5, std::exp(0.5)},
      {kLn, 3, std::log(3)},
      {kTrunc, -2.75, -2},
  };
  for (const auto& row : rows) {
    const Ref built(row.type, Constant(row.x));
    EXPECT_EQ(built->Type(), kNumber) << row.type;
    EXPECT_NEAR(mpf_get_d(InitValueOf(built)), row.value, 1e-9) << row.type;
  }
}

// --- Simplification ---

TEST_F(BuildTest, AnOperandNear0Or1IsSimplifiedAway)
{
  const double tiny = 1e-11;
  const double nearOne = 1 + 1e-11;
  const struct {
    ExprType type;
    double constant;
    Shape whenFirst, whenSecond;
  } rows[] = {
      {kPlus, 0, Shape::kTheVariable, Shape::kTheVariable},
      {kPlus, tiny, Shape::kTheVariable, Shape::kTheVariable},
      {kPlus, -tiny, Shape::kTheVariable, Shape::kTheVariable},
      {kPlus, 1, Shape::kNode, Shape::kNode},
      {kMinus, 0, Shape::kItsNegation, Shape::kTheVariable},
      {kMinus, tiny, Shape::kItsNegation, Shape::kTheVariable},
      {kMinus, -tiny, Shape::kItsNegation, Shape::kTheVariable},
      {kMinus, 1, Shape::kNode, Shape::kNode},
      {kMultiply, 0, Shape::kZero, Shape::kZero},
      {kMultiply, tiny, Shape::kZero, Shape::kZero},
      {kMultiply, -tiny, Shape::kZero, Shape::kZero},
      {kMultiply, 1, Shape::kTheVariable, Shape::kTheVariable},
      {kMultiply, nearOne, Shape::kTheVariable, Shape::kTheVariable},
      {kMultiply, -1, Shape::kItsNegation, Shape::kItsNegation},
      {kMultiply, -nearOne, Shape::kItsNegation, Shape::kItsNegation},
      {kMultiply, 2, Shape::kNode, Shape::kNode},
      {kMultiply, -2, Shape::kNode, Shape::kNode},
      {kDivide, 1, Shape::kNode, Shape::kTheVariable},
      {kDivide, nearOne, Shape::kNode, Shape::kTheVariable},
      {kDivide, -1, Shape::kNode, Shape::kItsNegation},
      {kDivide, -nearOne, Shape::kNode, Shape::kItsNegation},
      {kDivide, 2, Shape::kNode, Shape::kNode},
      {kDivide, 0, Shape::kNode, Shape::kNode},
      {kDivide, tiny, Shape::kNode, Shape::kNode},
  };
  for (const auto& row : rows) {
    global->_SIMPLIFYSMALL = true;
    EXPECT_EQ(ConstantFirst(row.type, row.constant), row.whenFirst)
        << row.type << ' ' << row.constant;
    EXPECT_EQ(ConstantSecond(row.type, row.constant), row.whenSecond)
        << row.type << ' ' << row.constant;

    global->_SIMPLIFYSMALL = false;
    EXPECT_EQ(ConstantFirst(row.type, row.constant), Shape::kNode)
        << row.type << ' ' << row.constant;
    EXPECT_EQ(ConstantSecond(row.type, row.constant), Shape::kNode)
        << row.type << ' ' << row.constant;
  }
}

TEST_F(BuildTest, AnOperandThatIsSimplifiedAwayLeavesTheOtherNodeItself)
{
  const int handles = x->RefCount();
  const Ref built(kMultiply, Constant(1), x);
  EXPECT_TRUE(built == x);
  EXPECT_EQ(x->RefCount(), handles + 1);
}

TEST_F(BuildTest, ADistanceOfExactlyTheAccuracyIsNotNear)
{
  const double accuracy = Part(10);
  const double below = accuracy - Part(40);
  mpf_set_d(global->_ACCURACY, accuracy);
  const struct {
    ExprType type;
    double constant;
    Shape whenSecond;
  } rows[] = {
      {kPlus, accuracy, Shape::kNode},          {kPlus, below, Shape::kTheVariable},
      {kPlus, -accuracy, Shape::kNode},         {kPlus, -below, Shape::kTheVariable},
      {kMinus, accuracy, Shape::kNode},         {kMinus, below, Shape::kTheVariable},
      {kMultiply, accuracy, Shape::kNode},      {kMultiply, below, Shape::kZero},
      {kMultiply, 1 + accuracy, Shape::kNode},  {kMultiply, 1 + below, Shape::kTheVariable},
      {kMultiply, 1 - accuracy, Shape::kNode},  {kMultiply, 1 - below, Shape::kTheVariable},
      {kMultiply, -1 + accuracy, Shape::kNode}, {kMultiply, -1 + below, Shape::kItsNegation},
      {kDivide, 1 + accuracy, Shape::kNode},    {kDivide, 1 + below, Shape::kTheVariable},
      {kDivide, -1 - accuracy, Shape::kNode},   {kDivide, -1 - below, Shape::kItsNegation},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ConstantSecond(row.type, row.constant), row.whenSecond)
        << row.type << ' ' << row.constant;
    if (row.type != kMinus && row.type != kDivide) {
      EXPECT_EQ(ConstantFirst(row.type, row.constant), row.whenSecond)
          << row.type << ' ' << row.constant;
    }
  }
}

TEST_F(BuildTest, AFactorThatIsBothNear0AndNear1GivesZero)
{
  mpf_set_d(global->_ACCURACY, 2);
  EXPECT_EQ(ConstantFirst(kMultiply, 1), Shape::kZero);
  EXPECT_EQ(ConstantSecond(kMultiply, 1), Shape::kZero);
}

TEST_F(BuildTest, ADivisorNearOneWithTheCoarsestAccuracyMayBe0)
{
  mpf_set_d(global->_ACCURACY, 2);
  EXPECT_EQ(ConstantSecond(kDivide, 0), Shape::kTheVariable);
  EXPECT_EQ(ConstantSecond(kDivide, -0.5), Shape::kItsNegation);
}

TEST_F(BuildTest, ADividendOf0Stays)
{
  EXPECT_EQ(TextOf(Ref(kDivide, Constant(0), x)), "( 0.00000000000e+00 / [x])");
}

TEST_F(BuildTest, ADivisorOf0Stays)
{
  EXPECT_EQ(TextOf(Ref(kDivide, x, Constant(0))), "([x] /  0.00000000000e+00)");
}

TEST_F(BuildTest, OperationsOfOneNodeWithItselfStay)
{
  EXPECT_EQ(TextOf(Ref(kMinus, x, x)), "([x] - [x])");
  EXPECT_EQ(TextOf(Ref(kDivide, x, x)), "([x] / [x])");
}

// --- Kinds that do not exist ---

TEST_F(BuildTest, AKindThatIsNotUnaryEndsTheRun)
{
  for (const int code : {-1, 0, 1, 2, 3, 4, 6, 7, 8, 9, 10, 31}) {
    const std::string message =
        "#(ERR) Expr::Ref::Ref(ExprType, const Expr::Ref&): neznamy typ unarni operace (" +
        std::to_string(code) + ")\n";
    EXPECT_EXIT(Ref(ExprType{code}, x), testing::ExitedWithCode(1), ExactText(message)) << code;
    EXPECT_EXIT(Ref(ExprType{code}, Constant(2)), testing::ExitedWithCode(1), ExactText(message))
        << code;
  }
}

TEST_F(BuildTest, AKindThatIsNotBinaryEndsTheRun)
{
  for (const int code : {-1, 0, 5, 6, 8, 9, 11, 30, 31}) {
    const std::string message =
        "#(ERR) Expr::Ref::Ref(ExprType, const Expr::Ref&, const Expr::Ref&): unknown binary "
        "operation (" +
        std::to_string(code) + ")\n";
    EXPECT_EXIT(Ref(ExprType{code}, x, x), testing::ExitedWithCode(1), ExactText(message)) << code;
    EXPECT_EXIT(Ref(ExprType{code}, Constant(1), Constant(2)), testing::ExitedWithCode(1),
                ExactText(message))
        << code;
  }
}

}  // namespace
}  // namespace varno
