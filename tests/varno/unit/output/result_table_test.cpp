#include "varno/output/result_table.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/algebraic.h"
#include "varno/expr/number.h"
#include "varno/parser/equation_table.h"

namespace varno {

namespace {

std::string Header()
{
  std::ostringstream out;
  WriteHeader(out);
  return out.str();
}

std::string Row(bool holdBack = false)
{
  std::ostringstream out;
  WriteRow(out, holdBack);
  return out.str();
}

/// In a table of a = 1, b = 2, c = 3, at time 0.5 and order 7.
class ResultTable : public testing::Test {
 protected:
  ResultTable()
  {
    mpf_set_d(global->_T, 0.5);
    global->_WORK0 = 7;
    EXPECT_TRUE(ParsedInput("b = 2; c = 3; a = 1;").accepted);
  }

  static void EnterConstant(const char* name, double constant)
  {
    EnterEquation(Expr::Ref(new Algebraic(name, Expr::Ref(new Number(constant)))));
  }

  const ScopedGlobal global;

  // The texts of the numbers in the table.
  const std::string half = " 5.00000000000e-01";
  const std::string one = " 1.00000000000e+00";
  const std::string two = " 2.00000000000e+00";
  const std::string three = " 3.00000000000e+00";
  const std::string four = " 4.00000000000e+00";
};

TEST_F(ResultTable, TheHeaderNamesTheColumnsInTheOrderOfTheTable)
{
  EXPECT_EQ(Header(), "# ORDER TIME a b c\n");
}

TEST_F(ResultTable, ARowHoldsOrderTimeAndValues)
{
  EXPECT_EQ(Row(), "  7 " + half + ' ' + one + ' ' + two + ' ' + three + '\n');
}

TEST_F(ResultTable, WithoutTheOrderColumnTheHashSignIsFollowedByTwoBlanks)
{
  global->_PRINTORDER = false;
  EXPECT_EQ(Header(), "#  TIME a b c\n");
  EXPECT_EQ(Row(), half + ' ' + one + ' ' + two + ' ' + three + '\n');
}

TEST_F(ResultTable, TheOrderIsFilledWithBlanksInEveryRow)
{
  std::ostringstream out;
  global->_EQUATIONS.clear();
  WriteRow(out, false);
  global->_WORK0 = 12;
  WriteRow(out, false);
  global->_WORK0 = 1234;
  WriteRow(out, false);
  EXPECT_EQ(out.str(), "  7 " + half + "\n 12 " + half + "\n1234 " + half + '\n');
}

TEST_F(ResultTable, ARowOfADifferentialEquationHoldsTheValueAtTheEndOfTheStep)
{
  global->_EQUATIONS.clear();
  global->SetStep(0.25);
  ASSERT_TRUE(ParsedInput("y' = 2 & 0.5;").accepted);
  // 0.5 + 2 * 0.25
  EXPECT_EQ(Row(), "  7 " + half + ' ' + one + '\n');
}

TEST_F(ResultTable, VariablesThatAreNotPrintedHaveNoColumn)
{
  global->_NOPRINTLIST = "b:";
  EnterConstant("b", 2);
  EXPECT_EQ(Header(), "# ORDER TIME a c\n");
  EXPECT_EQ(Row(), "  7 " + half + ' ' + one + ' ' + three + '\n');
}

TEST_F(ResultTable, APercentSignAnywhereInTheNameHidesTheColumnUnlessTemporariesArePrinted)
{
  EnterConstant("%0", 4);
  EnterConstant("b%", 4);
  EXPECT_EQ(Header(), "# ORDER TIME a b c\n");
  EXPECT_EQ(Row(), "  7 " + half + ' ' + one + ' ' + two + ' ' + three + '\n');

  global->_PRINTTEMPEQ = true;
  EXPECT_EQ(Header(), "# ORDER TIME %0 a b b% c\n");
  EXPECT_EQ(Row(),
            "  7 " + half + ' ' + four + ' ' + one + ' ' + two + ' ' + four + ' ' + three + '\n');
}

TEST_F(ResultTable, PrintedTemporariesObeyTheirPrintFlag)
{
  global->_PRINTTEMPEQ = true;
  global->_NOPRINTLIST = "%0:";
  EnterConstant("%0", 4);
  EnterConstant("%1", 4);
  EXPECT_EQ(Header(), "# ORDER TIME %1 a b c\n");
}

TEST_F(ResultTable, WithAllTermsThreeColumnsAreAdded)
{
  global->_EQUATIONS.clear();
  global->_USEALLTERMS = true;
  global->SetStep(0.5);
  // 0.25 = 0.5 * 2^-1, 8 = 0.5 * 2^4
  mpf_set_d(global->_STIFFMIN, 0.25);
  mpf_set_d(global->_STIFFMAX, 8);
  EXPECT_EQ(Header(), "# ORDER TIME log(|DY(max)|)     log(|DY(max)|)    h\n");
  EXPECT_EQ(Row(), "  7 " + half + " -1 4 " + half + '\n');
}

TEST_F(ResultTable, TheMeasuresOfTheLargestNumbersAreWrittenInFull)
{
  global->_EQUATIONS.clear();
  global->_USEALLTERMS = true;
  global->SetStep(0.5);
  // 5553 10^15 log2(10) = 18446666710909523117.7
  mpf_set_str(global->_STIFFMIN, "1e-5553000000000000000", 10);
  mpf_set_str(global->_STIFFMAX, "1e5553000000000000000", 10);
  EXPECT_EQ(Row(), "  7 " + half + " -18446666710909523117 18446666710909523118 " + half + '\n');
}

TEST_F(ResultTable, BeforeTheFirstStiffnessTestTheMeasuresAreTheirBounds)
{
  global->_EQUATIONS.clear();
  global->_USEALLTERMS = true;
  global->SetStep(0.5);
  // 2^3321 < 10^1000 < 2^3322
  EXPECT_EQ(Row(), "  7 " + half + " 3322 3322 " + half + '\n');
}

TEST_F(ResultTable, AHeldBackRowIsNotWritten)
{
  EXPECT_EQ(Row(true), "");
}

TEST_F(ResultTable, LinesAreFlushed)
{
  struct FlushCounter : std::stringbuf {
    int sync() override { return ++count, 0; }
    int count = 0;
  } buffer;
  std::ostream out(&buffer);
  WriteHeader(out);
  EXPECT_EQ(buffer.count, 1);
  WriteRow(out, false);
  EXPECT_EQ(buffer.count, 2);
}

/// The same table as matrices of two values per line.
class MatrixLayout : public ResultTable {
 protected:
  MatrixLayout() { global->_3DPOINTS = 2; }

  const std::string matrix = ' ' + one + ' ' + two + "\n " + three + '\n';
};

TEST_F(MatrixLayout, TheHeaderBeginsWithAHashSignAndANoBreakSpace)
{
  EXPECT_EQ(Header(), "#\xA0 a b\n# c\n");
}

TEST_F(MatrixLayout, TheHeaderHasALineForEveryKNames)
{
  EnterConstant("d", 4);
  EXPECT_EQ(Header(), "#\xA0 a b\n# c d\n#\n");
  global->_3DPOINTS = 1;
  EXPECT_EQ(Header(), "#\xA0 a\n# b\n# c\n# d\n#\n");
  global->_3DPOINTS = 5;
  EXPECT_EQ(Header(), "#\xA0 a b c d\n");
}

TEST_F(MatrixLayout, AMatrixHasALineForEveryKValues)
{
  EXPECT_EQ(Row(true), matrix);
  EnterConstant("d", 4);
  EXPECT_EQ(Row(true), ' ' + one + ' ' + two + "\n " + three + ' ' + four + "\n\n");
}

TEST_F(MatrixLayout, WithoutAllMatricesOnlyAHeldBackRowIsWritten)
{
  EXPECT_EQ(Row(false), "");
  EXPECT_EQ(Row(true), matrix);
}

TEST_F(MatrixLayout, WithAllMatricesEveryRowIsABlockForGnuplot)
{
  global->_ALL3DVALUES = true;
  global->_GNUPLOTOUTPUT = "png";
  const std::string block =
      "e\n\nset output 'o000001.png'\nsplot '-'  matrix with lines\n" + matrix;
  EXPECT_EQ(Row(false), block);
  EXPECT_EQ(Row(true), block);
}

TEST_F(MatrixLayout, TemporariesAreNeverWritten)
{
  EnterConstant("%0", 4);
  EnterConstant("b%", 4);
  for (const bool printTemporaries : {false, true}) {
    global->_PRINTTEMPEQ = printTemporaries;
    EXPECT_EQ(Header(), "#\xA0 a b\n# c\n");
    EXPECT_EQ(Row(true), matrix);
  }
}

TEST_F(MatrixLayout, VariablesThatAreNotPrintedTakeNoPlace)
{
  global->_NOPRINTLIST = "a:";
  EnterConstant("a", 1);
  EXPECT_EQ(Header(), "#\xA0 b c\n#\n");
  EXPECT_EQ(Row(true), ' ' + two + ' ' + three + "\n\n");
}

TEST_F(MatrixLayout, OrderAndAllTermsColumnsDoNotAppear)
{
  global->_USEALLTERMS = true;
  EXPECT_EQ(Header(), "#\xA0 a b\n# c\n");
  EXPECT_EQ(Row(true), matrix);
}

TEST_F(MatrixLayout, ANegativeNumberOfPointsMeansTheTable)
{
  global->_3DPOINTS = -2;
  EXPECT_EQ(Header(), "# ORDER TIME a b c\n");
  EXPECT_EQ(Row(true), "");
}

}  // namespace

}  // namespace varno
