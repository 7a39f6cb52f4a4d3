#include "varno/output/dumps.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/varno/support/log_capture.h"
#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/initialization.h"

namespace varno {

namespace {

/// y' = 1 & 2 with step 0.5 and a = 3 in the step that begins at time 0.25 and is the fourth.
class Dumps : public testing::Test {
 protected:
  Dumps()
  {
    global->SetStep(0.5);
    global->_STEPNO = 3;
    EXPECT_TRUE(ParsedInput("y' = 1 & 2; a = 3;").accepted);
  }

  /// The terms are 2, 1/2 and four zeros, which end the sum.
  static void ComputeAllTerms()
  {
    Mpf sum;
    VariableNamed("y").Value(sum);
  }

  static void ComputeTheFirstTerm()
  {
    Mpf term;
    VariableNamed("y").GetTerm(0, term);
  }

  std::string Dumped(void (*dump)(mpf_srcptr)) const
  {
    const LogCapture log;
    dump(startTime);
    return log.Text();
  }

  const ScopedGlobal global;
  const Mpf startTime{"0.25"};

  const std::string termsHead =
      "#(DY) Dumping DYs (START) ###############################\n"
      "#(DY) Dumping DYs (TIME)   2.50000000000e-01\n";
  const std::string termsTail = "#(DY) Dumping DYs (END)   ###############################\n";
  const std::string derivativesHead =
      "#(DER) Dumping Derivatives (START) ###############################\n"
      "#(DER) Dumping Derivatives (TIME)   2.50000000000e-01\n";
  const std::string derivativesTail =
      "#(DER) Dumping Derivatives (END) ###############################\n";
};

TEST_F(Dumps, TheTermDumpHoldsEveryCachedTermOfTheDifferentialEquations)
{
  ComputeAllTerms();
  EXPECT_EQ(Dumped(DumpTerms), termsHead +
                                   "#(DY) DY_y[0](3) =  2.00000000000e+00\n"
                                   "#(DY) DY_y[1](3) =  5.00000000000e-01\n"
                                   "#(DY) DY_y[2](3) =  0.00000000000e+00\n"
                                   "#(DY) DY_y[3](3) =  0.00000000000e+00\n"
                                   "#(DY) DY_y[4](3) =  0.00000000000e+00\n"
                                   "#(DY) DY_y[5](3) =  0.00000000000e+00\n" +
                                   termsTail);
}

TEST_F(Dumps, TheDerivativeDumpBeginsWithTheFirstDerivative)
{
  ComputeAllTerms();
  EXPECT_EQ(Dumped(DumpDerivatives), derivativesHead +
                                         "#(DER) dy^[1](3) =  1.00000000000e+00\n"
                                         "#(DER) dy^[2](3) =  0.00000000000e+00\n"
                                         "#(DER) dy^[3](3) =  0.00000000000e+00\n"
                                         "#(DER) dy^[4](3) =  0.00000000000e+00\n"
                                         "#(DER) dy^[5](3) =  0.00000000000e+00\n" +
                                         derivativesTail);
}

TEST_F(Dumps, ADerivativeIsTheTermWithoutTheFactorialAndThePowerOfTheStep)
{
  // y = exp(2 t) has the k-th derivative 2^k at 0, and the terms 2^k 0.5^k / k! = 1 / k!.
  global->_EQUATIONS.clear();
  ASSERT_TRUE(ParsedInput("y' = 2 * y & 1;").accepted);
  InitializeEquations();
  Mpf term;
  for (int k = 0; k <= 3; ++k) VariableNamed("y").GetTerm(k, term);
  EXPECT_EQ(Dumped(DumpTerms), termsHead +
                                   "#(DY) DY_y[0](3) =  1.00000000000e+00\n"
                                   "#(DY) DY_y[1](3) =  1.00000000000e+00\n"
                                   "#(DY) DY_y[2](3) =  5.00000000000e-01\n"
                                   "#(DY) DY_y[3](3) =  1.66666666666e-01\n" +
                                   termsTail);
  EXPECT_EQ(Dumped(DumpDerivatives), derivativesHead +
                                         "#(DER) dy^[1](3) =  2.00000000000e+00\n"
                                         "#(DER) dy^[2](3) =  4.00000000000e+00\n"
                                         "#(DER) dy^[3](3) =  8.00000000000e+00\n" +
                                         derivativesTail);
}

TEST_F(Dumps, ASingleCachedTermGivesOneTermLineAndNoDerivativeLine)
{
  ComputeTheFirstTerm();
  EXPECT_EQ(Dumped(DumpTerms), termsHead + "#(DY) DY_y[0](3) =  2.00000000000e+00\n" + termsTail);
  EXPECT_EQ(Dumped(DumpDerivatives), derivativesHead + derivativesTail);
}

TEST_F(Dumps, EveryEquationIsDumpedWhateverIsPrinted)
{
  global->_NOPRINTLIST = "y:%0:";
  ASSERT_TRUE(ParsedInput("y' = 1 & 2; a = exp(t);").accepted);
  InitializeEquations();
  ComputeTheFirstTerm();
  Mpf term;
  VariableNamed("%0").GetTerm(0, term);
  EXPECT_EQ(Dumped(DumpTerms), termsHead +
                                   "#(DY) DY_%0[0](3) =  1.00000000000e+00\n"
                                   "#(DY) DY_y[0](3) =  2.00000000000e+00\n" +
                                   termsTail);
}

TEST_F(Dumps, TheStepNumberIsThatOfTheCache)
{
  ComputeTheFirstTerm();
  global->_STEPNO = 4;
  EXPECT_EQ(Dumped(DumpTerms), termsHead + "#(DY) DY_y[0](3) =  2.00000000000e+00\n" + termsTail);
}

TEST_F(Dumps, TheTreeDumpHoldsEveryEquationWithItsStartValue)
{
  global->_EQUATIONS.clear();
  ASSERT_TRUE(ParsedInput("y'' = -y / (t + z) & -1; z = sin(2 * y) - pi & 5; x = 1.5;").accepted);
  const LogCapture log;
  DumpTrees();
  EXPECT_EQ(log.Text(),
            "#(TREEDUMP) Dumping tree\n"
            "#(TREEDUMP) ALG: \tx =  1.50000000000e+00;\n"
            "#(TREEDUMP) DIF: \ty' = [y'] & -1.00000000000e+00;\n"
            "#(TREEDUMP) DIF: \ty'' = ((-y) / (t + z)) &  0.00000000000e+00;\n"
            "#(TREEDUMP) ALG: \tz = (sin(( 2.00000000000e+00 * y)) -  3.14159265358e+00);\n"
            "#(TREEDUMP) Tree dumped\n");
}

TEST_F(Dumps, AfterTheInitialisationVariablesStandForReferencesAndFunctions)
{
  global->_EQUATIONS.clear();
  ASSERT_TRUE(ParsedInput("y' = exp(y) - a & 0; a = y;").accepted);
  InitializeEquations();
  const LogCapture log;
  DumpTrees();
  EXPECT_EQ(log.Text(),
            "#(TREEDUMP) Dumping tree\n"
            "#(TREEDUMP) DIF: \t%0' = (([%0] - {a}) * [%0]) &  1.00000000000e+00;\n"
            "#(TREEDUMP) ALG: \ta = [y];\n"
            "#(TREEDUMP) DIF: \ty' = ([%0] - {a}) &  0.00000000000e+00;\n"
            "#(TREEDUMP) Tree dumped\n");
}

}  // namespace

}  // namespace varno
