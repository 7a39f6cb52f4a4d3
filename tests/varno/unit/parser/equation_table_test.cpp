#include "varno/parser/equation_table.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/algebraic.h"
#include "varno/expr/differential.h"
#include "varno/expr/equation.h"
#include "varno/expr/initialization.h"

namespace varno {

using namespace support;

namespace {

Expr::Ref NewDifferential(const std::string& name)
{
  return Expr::Ref(new Differential(name, Expr::Ref()));
}

/// The names in the order of a walk over the table.
std::vector<std::string> NamesInOrder()
{
  std::vector<std::string> names;
  for (const auto& [name, variable] : Expr::Global->_EQUATIONS) names.push_back(name);
  return names;
}

class EquationTableTest : public testing::Test {
 protected:
  const ScopedGlobal global;
};

TEST_F(EquationTableTest, ADerivativeIsNamedByItsApostrophes)
{
  EXPECT_EQ(DerivativeName("y", 0), "y");
  EXPECT_EQ(DerivativeName("y", 1), "y'");
  EXPECT_EQ(DerivativeName("y", 3), "y'''");
}

TEST_F(EquationTableTest, AWalkGoesBytewiseByName)
{
  ASSERT_TRUE(ParsedInput("y2' = 1 & 0; y1' = y2 & 0;").accepted);
  EXPECT_EQ(NamesInOrder(), (std::vector<std::string>{"y1", "y2"}));
  ASSERT_TRUE(ParsedInput("y10 = 1; a = 1; _b = 1; Y = 1; y'' = 1; yy = 1;").accepted);
  EXPECT_EQ(NamesInOrder(),
            (std::vector<std::string>{"Y", "_b", "a", "y", "y'", "y1", "y10", "y2", "yy"}));
}

TEST_F(EquationTableTest, TemporaryNamesComeBeforeAllOthersAndTenBeforeTwo)
{
  for (const char* const name : {"A", "_", "%2", "%10", "%0"}) EnterEquation(NewDifferential(name));
  EXPECT_EQ(NamesInOrder(), (std::vector<std::string>{"%0", "%10", "%2", "A", "_"}));
}

TEST_F(EquationTableTest, TheLastEquationOfANameWins)
{
  ASSERT_TRUE(ParsedInput("x = a; y = x; x' = b;").accepted);
  EXPECT_EQ(NamesInOrder(), (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(VariableNamed("x").Type(), kDifferential);
  EXPECT_EQ(PrintedRightHandSide("x"), "b");
}

TEST_F(EquationTableTest, AllReferencesMeanTheLastEquationOfAName)
{
  ASSERT_TRUE(ParsedInput("x = 1; y = x; x' = 2;").accepted);
  InitializeEquations();
  EXPECT_EQ(VariableNamed("y").RightHandSide(), global->_EQUATIONS.at("x"));
  EXPECT_EQ(VariableNamed("y").RightHandSide()->Type(), kDifferential);
}

TEST_F(EquationTableTest, AReferenceMayNameAnEquationThatComesLater)
{
  ASSERT_TRUE(ParsedInput("a' = b; b' = 1;").accepted);
  InitializeEquations();
  EXPECT_EQ(VariableNamed("a").RightHandSide(), global->_EQUATIONS.at("b"));
}

TEST_F(EquationTableTest, AReferenceMeansTheVariableWhateverItsDerivativeMark)
{
  ASSERT_TRUE(ParsedInput("y'' = 1; a = y'; b = y'7;").accepted);
  InitializeEquations();
  EXPECT_EQ(VariableNamed("a").RightHandSide(), global->_EQUATIONS.at("y"));
  EXPECT_EQ(VariableNamed("b").RightHandSide(), global->_EQUATIONS.at("y"));
}

TEST_F(EquationTableTest, AReferenceToAnUndefinedEquationEndsTheRun)
{
  ASSERT_TRUE(ParsedInput("a' = b & 0;").accepted);
  EXPECT_EXIT(InitializeEquations(), testing::ExitedWithCode(1),
              ExactText("\n#(ERR) Reference to undefined equation \"b\"\n"));
}

TEST_F(EquationTableTest, TheLastStartValueOfANameWins)
{
  EnterStartValue("y", Mpf(1.0));
  EnterStartValue("y", Mpf(2.0));
  ASSERT_EQ(global->_STARTVALUES.size(), 1U);
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y"), 2), 0);
}

TEST_F(EquationTableTest, StartValuesAreAppliedToTheVariablesThatExist)
{
  EnterEquation(NewDifferential("y"));
  EnterStartValue("y", Mpf(2.0));
  EnterStartValue("z", Mpf(3.0));
  ApplyStartValues();
  Mpf initial;
  VariableNamed("y").InitValue(initial);
  EXPECT_EQ(mpf_cmp_ui(initial, 2), 0);
  EXPECT_EQ(NamesInOrder(), std::vector<std::string>{"y"});
}

TEST_F(EquationTableTest, ThePrintListsSelectByNameAndColon)
{
  const struct {
    const char* wanted;
    const char* unwanted;
    const char* name;
    bool printed;
  } rows[] = {
      {"", "", "y", true},
      {"y:", "", "y", true},
      {"a:y:b:", "", "y", true},
      {"a:b:", "", "y", false},
      {"y1:", "", "y", false},
      {"Y:", "", "y", false},
      {"", "y:", "y", false},
      {"", "a:", "y", true},
      {"y:", "y:", "y", false},
      {"a:", "y:", "y", false},
      {"y':", "", "y'", true},
      {"y':", "", "y", false},
      {"%0:", "", "%0", true},
      // Without the colon behind it a name is not listed.
      {"y", "", "y", false},
      {"a:y", "", "y", false},
      {"", "y", "y", true},
      // A listed name also selects every name that it ends with.
      {"xy2:", "", "xy2", true},
      {"xy2:", "", "y2", true},
      {"xy2:", "", "2", true},
      {"xy2:", "", "xy", false},
      {"", "xy2:", "y2", false},
  };
  for (const auto& [wanted, unwanted, name, printed] : rows) {
    global->_PRINTLIST = wanted;
    global->_NOPRINTLIST = unwanted;
    EXPECT_EQ(VariableOf(NewDifferential(name)).IsPrinted(), printed)
        << "-P '" << wanted << "' -N '" << unwanted << "' " << name;
  }
}

TEST_F(EquationTableTest, EveryKindOfVariableGetsItsOwnPrintFlag)
{
  global->_PRINTLIST = "y':x:%0:";
  ASSERT_TRUE(ParsedInput("y'' = sin(t); x = 1; z = 1;").accepted);
  InitializeEquations();
  for (const auto& [name, variable] : global->_EQUATIONS) {
    EXPECT_EQ(VariableOf(variable).IsPrinted(), name == "y'" || name == "x" || name == "%0")
        << name;
  }
}

TEST_F(EquationTableTest, PrintFlagsAreSettledWhenTheVariableIsMade)
{
  EnterEquation(NewDifferential("y"));
  global->_PRINTLIST = "z:";
  EXPECT_TRUE(VariableNamed("y").IsPrinted());
}

}  // namespace

}  // namespace varno
