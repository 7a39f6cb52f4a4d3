#include "varno/core/number_output.h"

#include <iomanip>
#include <sstream>
#include <string>

#include <gmp.h>
#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"

namespace varno {

using arith::Mpf;

namespace {

std::string Written(const char* decimal)
{
  std::ostringstream out;
  out << Mpf(decimal);
  return out.str();
}

/// A number and what a stream does with its fill character behind it.
std::string WrittenBeforeSeven(const char* decimal)
{
  std::ostringstream out;
  out << std::setfill('*') << Mpf(decimal) << '|' << std::setw(4) << 7;
  return out.str();
}

class NumberOutput : public testing::Test {
 protected:
  const ScopedGlobal global;
};

TEST_F(NumberOutput, FollowsTheSettings)
{
  EXPECT_EQ(Written("-12.5"), "-1.25000000000e+01");
  global->_PRINTWIDTH = 12;
  EXPECT_EQ(Written("-12.5"), "-1.25000000000e+01");
  global->_PRINTCHARS = 2;
  EXPECT_EQ(Written("-12.5"), "    -1.25e+01");
  global->_FMT_INT = 3;
  EXPECT_EQ(Written("-12.5"), "   -1.25e+001");
  global->_FILLCHAR = '+';
  EXPECT_EQ(Written("12.5"), "   +1.25e+001");
  global->_FMT_FLAG = false;
  EXPECT_EQ(Written("12.5"), std::string(10, ' ') + "+12.5");
  global->_FMT_FLAG2 = true;
  EXPECT_EQ(Written("12.5"), " 0.125e2");
}

TEST_F(NumberOutput, ExponentFormLeavesTheFillCharacterOfTheStreamAtZero)
{
  EXPECT_EQ(WrittenBeforeSeven("1.5"), " 1.50000000000e+00|0007");
}

TEST_F(NumberOutput, ZeroAndTheOtherFormsLeaveTheFillCharacterAlone)
{
  EXPECT_EQ(WrittenBeforeSeven("0"), " 0.00000000000e+00|***7");
  global->_FMT_FLAG = false;
  EXPECT_EQ(WrittenBeforeSeven("1.5"), "     1.50000000000|***7");
  global->_FMT_FLAG = true;
  global->_FMT_FLAG2 = true;
  EXPECT_EQ(WrittenBeforeSeven("1.5"), " 0.15e1|***7");
}

TEST_F(NumberOutput, TheManipulatorsSwitchThePlainFormOnAndOff)
{
  const Mpf half("0.5");
  std::ostringstream out;
  out << half << PlainNumbersOn << half << PlainNumbersOff << half;
  EXPECT_EQ(out.str(), " 5.00000000000e-01 0.5e0 5.00000000000e-01");
}

}  // namespace
}  // namespace varno
