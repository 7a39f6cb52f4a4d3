#include "varno/expr/simplification.h"

#include <optional>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/rational.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/expr/number.h"

namespace varno {

using namespace support;

namespace {

using Ref = Expr::Ref;

class Simplification : public testing::Test {
 protected:
  static Ref Constant(const char* decimal) { return Ref(new Number(decimal)); }

  /// What takes the place of an operation, as text; "none" for nothing.
  static std::string TextOf(const std::optional<Ref>& simplified)
  {
    if (!simplified) return "none";
    std::ostringstream out;
    (*simplified)->Print(out);
    return out.str();
  }

  const ScopedGlobal global;
  const Ref y{new Differential("y", Ref())};
};

TEST_F(Simplification, TwoNumbersGiveANumber)
{
  const struct {
    ExprType type;
    Rational value;
  } rows[] = {{kPlus, Rational(5, 2)},
              {kMinus, Rational(-3, 2)},
              {kMultiply, 1},
              {kDivide, Rational(1, 4)}};
  for (const bool simplifySmall : {true, false}) {
    global->_SIMPLIFYSMALL = simplifySmall;
    for (const auto& row : rows) {
      const std::optional<Ref> folded = Simplified(row.type, Constant("0.5"), Constant("2"));
      ASSERT_TRUE(folded.has_value());
      ASSERT_EQ((*folded)->Type(), kNumber);
      EXPECT_TRUE(IsExactly(row.value, ConstantOf(*folded)));
    }
  }
}

TEST_F(Simplification, ANumberNear0Or1LeavesTheOtherOperand)
{
  // 0 + y = y, y + 0 = y, 0 - y = -y, y - 0 = y, 1 y = y 1 = y, -1 y = y / -1 = -y; near is closer
  // than the accuracy of 1e-10.
  for (const char* zero : {"0", "9e-11", "-9e-11"}) {
    EXPECT_EQ(TextOf(Simplified(kPlus, Constant(zero), y)), "[y]") << zero;
    EXPECT_EQ(TextOf(Simplified(kPlus, y, Constant(zero))), "[y]") << zero;
    EXPECT_EQ(TextOf(Simplified(kMinus, Constant(zero), y)), "(-[y])") << zero;
    EXPECT_EQ(TextOf(Simplified(kMinus, y, Constant(zero))), "[y]") << zero;
    for (const auto& product :
         {Simplified(kMultiply, Constant(zero), y), Simplified(kMultiply, y, Constant(zero))}) {
      ASSERT_TRUE(product.has_value());
      EXPECT_TRUE(IsExactly(0, ConstantOf(*product))) << zero;
    }
  }
  for (const char* one : {"1", "1.00000000009"}) {
    EXPECT_EQ(TextOf(Simplified(kMultiply, Constant(one), y)), "[y]") << one;
    EXPECT_EQ(TextOf(Simplified(kMultiply, y, Constant(one))), "[y]") << one;
    EXPECT_EQ(TextOf(Simplified(kDivide, y, Constant(one))), "[y]") << one;
  }
  EXPECT_EQ(TextOf(Simplified(kMultiply, Constant("-1"), y)), "(-[y])");
  EXPECT_EQ(TextOf(Simplified(kMultiply, y, Constant("-1"))), "(-[y])");
  EXPECT_EQ(TextOf(Simplified(kDivide, y, Constant("-1"))), "(-[y])");
}

TEST_F(Simplification, EverythingElseStays)
{
  EXPECT_EQ(TextOf(Simplified(kPlus, y, y)), "none");
  EXPECT_EQ(TextOf(Simplified(kPlus, Constant("2e-10"), y)), "none");
  EXPECT_EQ(TextOf(Simplified(kMultiply, Constant("1.0000000002"), y)), "none");
  // A dividend of 0 stays, since the divisor may be 0, and so does a dividend of 1.
  EXPECT_EQ(TextOf(Simplified(kDivide, Constant("0"), y)), "none");
  EXPECT_EQ(TextOf(Simplified(kDivide, Constant("1"), y)), "none");
  EXPECT_EQ(TextOf(Simplified(kDivide, y, Constant("0"))), "none");
}

TEST_F(Simplification, NothingIsShortenedWhenItIsSwitchedOff)
{
  global->_SIMPLIFYSMALL = false;
  EXPECT_EQ(TextOf(Simplified(kPlus, Constant("0"), y)), "none");
  EXPECT_EQ(TextOf(Simplified(kMultiply, y, Constant("1"))), "none");
}

}  // namespace
}  // namespace varno
