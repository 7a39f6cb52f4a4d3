#include "varno/parser/parse.h"

#include <string>

#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"

namespace varno {

using arith::Mpf;

namespace {

class Parse : public testing::Test {
 protected:
  const ScopedGlobal global;
};

TEST_F(Parse, TheLastExplicitStartValueWinsWhateverItsForm)
{
  const struct {
    const char* text;
    double start;
  } rows[] = {
      {"y' = 1 & 2;", 2},
      {"y(0) = 3; y' = 1;", 3},
      {"y' = 1 & 2; y(0) = 3;", 3},
      {"y(0) = 3; y' = 1 & 2;", 2},
      {"y' = 1 & 2; y' = 5;", 2},
      {"y' = 1 & 2; y = 5 & 4;", 4},
      {"y(0) = 3; y(0) = 4; y'' = 1;", 4},
      {"y(0) = 3; y' = 1 & 0;", 0},
  };
  for (const auto& [text, start] : rows) {
    const ScopedGlobal fresh;
    ASSERT_TRUE(ParsedInput(text).accepted) << text;
    EXPECT_EQ(mpf_cmp_d(fresh->_STARTVALUES.at("y"), start), 0) << text;
  }
}

TEST_F(Parse, AStartValueOfADerivativeBelongsToTheVariableOfThatDerivative)
{
  ASSERT_TRUE(ParsedInput("y''' = 1 & 2; y'(0) = 5;").accepted);
  Mpf initial;
  const struct {
    const char* name;
    unsigned long start;
  } rows[] = {{"y", 2}, {"y'", 5}, {"y''", 0}};
  for (const auto& [name, start] : rows) {
    VariableNamed(name).InitValue(initial);
    EXPECT_EQ(mpf_cmp_ui(initial, start), 0) << name;
  }
}

TEST_F(Parse, VariablesHoldTheirStartValuesFromTheEndOfTheInputOn)
{
  ASSERT_TRUE(ParsedInput("y' = 0 & 2;").accepted);
  Differential& y = VariableNamed("y");
  Mpf initial, firstTerm;
  y.InitValue(initial);
  y.GetTerm(0, firstTerm);
  EXPECT_EQ(mpf_cmp_ui(initial, 2), 0);
  EXPECT_EQ(mpf_cmp_ui(firstTerm, 2), 0);
}

TEST_F(Parse, StartStatementsForUnknownNamesAreStoredAndNotUsed)
{
  ASSERT_TRUE(ParsedInput("z(0) = 3; y' = 1; y'(0) = 4;").accepted);
  EXPECT_EQ(global->_EQUATIONS.size(), 1U);
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("z"), 3), 0);
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y'"), 4), 0);
}

}  // namespace

}  // namespace varno
