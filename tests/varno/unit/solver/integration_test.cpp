#include "varno/solver/integration.h"

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/config/setters.h"
#include "varno/core/global_data.h"
#include "varno/expr/algebraic.h"
#include "varno/expr/time.h"
#include "varno/parser/equation_table.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

struct Row {
  int order = -1;
  double time = NAN;
  std::vector<double> values;
};

/// What a run of the loop writes.
struct RunOutcome {
  RunOutcome()
  {
    const CapturedOutput output;
    Integration().Run();
    results = output.Results();
    commentary = output.Commentary();
  }

  std::vector<Row> Rows() const
  {
    std::vector<Row> rows;
    std::istringstream lines(results);
    for (std::string line; std::getline(lines, line);) {
      Row row;
      std::istringstream fields(line);
      fields >> row.order >> row.time;
      for (double value = 0; fields >> value;) row.values.push_back(value);
      rows.push_back(row);
    }
    return rows;
  }

  std::vector<double> Times() const
  {
    std::vector<double> times;
    for (const Row& row : Rows()) times.push_back(row.time);
    return times;
  }

  std::vector<std::string> Comments(const std::string& tag) const
  {
    return LinesStarting(commentary, tag);
  }

  std::string results;
  std::string commentary;
};

using Lines = std::vector<std::string>;
using Times = std::vector<double>;

class IntegrationTest : public testing::Test {
 protected:
  void SetStepAndEnd(double h, double tmax)
  {
    global->SetStep(h);
    mpf_set_d(global->_TMAX, tmax);
  }

  /// y' = y & 1
  static Ref EnterExponential(const std::string& name = "y")
  {
    const Ref y = MakeVariable(name, 1.0);
    VariableOf(y).SetRightHandSide(y);
    return y;
  }

  /// y' = 1 & 0, of order 2
  static void EnterLine() { MakeVariable("y", 0.0, Constant(1)); }

  /// Accuracy and terms that the exponential needs 5 terms with at the step 1, and 4 at 1/2: the
  /// terms are 1, 1, 1/2, 1/6, 1/24, ... against 1/100 of the sum.
  void AllowFourTerms()
  {
    mpf_set_d(global->_ACCURACY, 0.01);
    global->SetTermCount(8);
  }

  ScopedGlobal global;
};

// --- The way to Tmax ---

TEST_F(IntegrationTest, AnInitialStepBeyondTmaxIsCutToTmax)
{
  EnterLine();
  SetStepAndEnd(5.0, 1.0);
  const RunOutcome run;
  EXPECT_EQ(run.results,
            "  2  0.00000000000e+00  1.00000000000e+00\n"
            "  2  1.00000000000e+00  2.00000000000e+00\n");
  EXPECT_EQ(run.commentary, "#(TST) Max(y)=0  Min(y)=0  Diff=0\n");
}

TEST_F(IntegrationTest, ARowPairsTheTimeOfAStepWithTheValuesAtItsEnd)
{
  global->_FIXEDSTEP = true;
  EnterExponential();
  SetStepAndEnd(0.25, 1.0);
  const std::vector<Row> rows = RunOutcome().Rows();
  ASSERT_EQ(rows.size(), 5U);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].time, 0.25 * static_cast<double>(i));
    EXPECT_NEAR(rows[i].values.at(0), std::exp(rows[i].time + 0.25), 1e-10);
  }
}

TEST_F(IntegrationTest, TheLastStepIsCutSoThatTheRunLandsOnTmax)
{
  global->_FIXEDSTEP = true;
  EnterExponential();
  SetStepAndEnd(0.375, 1.0);
  const RunOutcome run;
  EXPECT_EQ(run.Times(), (Times{0, 0.375, 0.75, 1}));
  EXPECT_TRUE(IsExactly(1, global->_T));
  EXPECT_TRUE(IsExactly(Rational(1, 4), global->_STEP));
  EXPECT_NEAR(run.Rows().back().values.at(0), std::exp(3 * 0.375 + 0.25), 1e-10);
}

TEST_F(IntegrationTest, WithTmaxAtTheStartOneRowIsWritten)
{
  EnterExponential();
  SetStepAndEnd(0.1, 0.0);
  const RunOutcome run;
  EXPECT_EQ(run.results, "  1  0.00000000000e+00  1.00000000000e+00\n");
  EXPECT_EQ(run.commentary, "");
}

TEST_F(IntegrationTest, ANegativeTmaxIsReachedInOneStep)
{
  EnterLine();
  SetStepAndEnd(0.1, -1.0);
  EXPECT_EQ(RunOutcome().results,
            "  2  0.00000000000e+00 -1.00000000000e+00\n"
            "  2 -1.00000000000e+00 -2.00000000000e+00\n");
}

TEST_F(IntegrationTest, AnOscillatorKeepsItsEnergy)
{
  const Ref s = MakeVariable("s", 0.0);
  const Ref c = MakeVariable("c", 1.0, Ref(kUnMinus, s));
  VariableOf(s).SetRightHandSide(c);
  global->_FIXEDSTEP = true;
  SetStepAndEnd(0.5, 20.0);
  for (const Row& row : RunOutcome().Rows()) {
    const double cosine = row.values.at(0);
    const double sine = row.values.at(1);
    EXPECT_NEAR(sine, std::sin(row.time + 0.5), 1e-10) << row.time;
    EXPECT_NEAR(sine * sine + cosine * cosine, 1.0, 1e-10) << row.time;
  }
}

TEST_F(IntegrationTest, AFinerAccuracyGivesMoreDigits)
{
  double lastError = 1.0;
  for (const double accuracy : {1e-2, 1e-4, 1e-8}) {
    const ScopedGlobal inner;
    mpf_set_d(inner->_ACCURACY, accuracy);
    EnterExponential();
    SetStepAndEnd(0.25, 2.0);
    inner->_FIXEDSTEP = true;
    const double error = std::abs(RunOutcome().Rows().back().values.at(0) / std::exp(2.25) - 1.0);
    EXPECT_LT(error, accuracy);
    EXPECT_LT(error, lastError);
    lastError = error;
  }
}

TEST_F(IntegrationTest, AnAlgebraicVariableHasItsValueAtTheTimeOfTheRow)
{
  EnterExponential();
  EnterEquation(Ref(new Algebraic("x", Ref(new Time))));
  global->_FIXEDSTEP = true;
  SetStepAndEnd(0.25, 1.0);
  for (const Row& row : RunOutcome().Rows()) EXPECT_EQ(row.values.at(0), row.time);
}

/// a = b + 1 asks for b = a, which finds the a of the pass before; then b itself is computed anew.
TEST_F(IntegrationTest, AnAlgebraicVariableThatWasAskedForBeforeIsComputedAnew)
{
  const Ref a(new Algebraic("a", Ref()));
  const Ref b(new Algebraic("b", a));
  VariableOf(a).SetRightHandSide(Ref(kPlus, b, Constant(1)));
  EnterEquation(a);
  EnterEquation(b);
  global->_FIXEDSTEP = true;
  SetStepAndEnd(0.5, 1.0);
  EXPECT_EQ(RunOutcome().results,
            "  0  0.00000000000e+00  1.00000000000e+00  1.00000000000e+00\n"
            "  0  5.00000000000e-01  2.00000000000e+00  2.00000000000e+00\n"
            "  0  1.00000000000e+00  3.00000000000e+00  3.00000000000e+00\n");
}

// --- Steps that lead nowhere ---

TEST_F(IntegrationTest, AStepThatNeverReachesTmaxEndsTheRunBeforeTheFirstPass)
{
  const struct {
    double h, tmax;
    const char* message;
  } rows[] = {
      {0.0, 1.0, " 0.00000000000e+00 never reaches Tmax=  1.00000000000e+00"},
      {-0.5, 1.0, "-5.00000000000e-01 never reaches Tmax=  1.00000000000e+00"},
  };
  for (const auto& row : rows) {
    EnterLine();
    SetStepAndEnd(row.h, row.tmax);
    EXPECT_EXIT(Integration().Run(), testing::ExitedWithCode(1),
                ExactText(std::string("#(ERR) A step of ") + row.message + "\n"));
  }
}

// y' = 1: the values are the sum of the steps made, and the time of a row is that of the start of
// its step where no step was rejected.

TEST_F(IntegrationTest, ANegativeStepWithTmaxAtTheStartWritesOneRow)
{
  EnterLine();
  SetStepAndEnd(-0.5, 0.0);
  EXPECT_EQ(RunOutcome().results, "  2  0.00000000000e+00 -5.00000000000e-01\n");
}

/// As a step beyond a Tmax above 0 is, a negative step that ends above Tmax is cut to all of it.
TEST_F(IntegrationTest, ANegativeStepThatEndsAboveTmaxIsMadeToReachIt)
{
  for (const double tmax : {-0.5, -0.75, -4.0}) {
    const ScopedGlobal inner;
    inner->_FIXEDSTEP = true;
    EnterLine();
    SetStepAndEnd(-0.5, tmax);
    const RunOutcome run;
    EXPECT_EQ(run.Times(), (Times{0, tmax}));
    EXPECT_EQ(run.Rows()[0].values.at(0), tmax);
    EXPECT_EQ(run.Rows()[1].values.at(0), 2 * tmax);
  }
}

/// From 0 the step -1/2 ends below Tmax, which the next step starts from.
TEST_F(IntegrationTest, ANegativeStepFromBelowTmaxEndsTheRun)
{
  global->_FIXEDSTEP = true;
  EnterLine();
  SetStepAndEnd(-0.5, -0.25);
  Integration integration;
  integration.Begin();
  EXPECT_TRUE(integration.Pass());
  EXPECT_TRUE(IsExactly(Rational(-1, 2), global->_T));
  EXPECT_EXIT(integration.Pass(), testing::ExitedWithCode(1),
              ExactText("#(TST) Max(y)=0  Min(y)=0  Diff=0\n"
                        "#(ERR) A step of -5.00000000000e-01 never reaches Tmax= "
                        "-2.50000000000e-01\n"));
}

TEST_F(IntegrationTest, ANegativeStepFromBelowTmaxIsAllowedWhereTheSteadyStateEndsTheRun)
{
  MakeVariable("y", 1.0, Constant(0));
  global->_FIXEDSTEP = true;
  global->_STEADYSTOP = 4;
  SetStepAndEnd(-0.5, -0.25);
  EXPECT_EQ(RunOutcome().Times(), (Times{0, -0.5, -1, -1.5}));
}

/// exp(-1) needs more than four terms, exp(-1/2) does not.
TEST_F(IntegrationTest, AHalvedNegativeStepMayLandOnTmax)
{
  AllowFourTerms();
  EnterExponential();
  SetStepAndEnd(-1.0, -0.5);
  const RunOutcome run;
  EXPECT_EQ(run.Times(), Times{-0.5});
  EXPECT_NEAR(run.Rows()[0].values.at(0), std::exp(-0.5), 1e-2);
}

TEST_F(IntegrationTest, AStepOf0IsAllowedWhereTheSteadyStateEndsTheRun)
{
  EnterExponential();
  SetStepAndEnd(0.0, 1.0);
  global->_STEADYSTOP = 2;
  EXPECT_EQ(RunOutcome().Times(), (Times{0, 0}));
}

// --- Halving ---

TEST_F(IntegrationTest, AStepThatNeedsTooManyTermsIsHalvedAndRepeated)
{
  AllowFourTerms();
  EnterExponential();
  SetStepAndEnd(1.0, 1.0);
  const RunOutcome run;
  EXPECT_EQ(run.Comments("#(COMP)"),
            Lines{"#(COMP) Max ORDER reached! Changing step to  5.00000000000e-01\tTime= "
                  " 0.00000000000e+00"});
  const std::vector<Row> rows = run.Rows();
  ASSERT_EQ(rows.size(), 2U);
  // The time was moved on by the new step, the values start where they were.
  EXPECT_EQ(rows[0].time, 0.5);
  EXPECT_EQ(rows[0].order, 4);
  EXPECT_NEAR(rows[0].values.at(0), std::exp(0.5), 1e-6);
  EXPECT_EQ(rows[1].time, 1.0);
  EXPECT_NEAR(rows[1].values.at(0), std::exp(1.0), 1e-6);
}

TEST_F(IntegrationTest, AStepIsHalvedUntilTheTermsSuffice)
{
  AllowFourTerms();
  EnterExponential();
  SetStepAndEnd(4.0, 4.0);
  const Lines lines = RunOutcome().Comments("#(COMP) Max ORDER");
  ASSERT_EQ(lines.size(), 3U);
  const std::string start = "#(COMP) Max ORDER reached! Changing step to  ";
  const std::string end = "\tTime=  0.00000000000e+00";
  EXPECT_EQ(lines[0], start + "2.00000000000e+00" + end);
  EXPECT_EQ(lines[1], start + "1.00000000000e+00" + end);
  EXPECT_EQ(lines[2], start + "5.00000000000e-01" + end);
}

TEST_F(IntegrationTest, AnAlgebraicVariableFollowsTheTimeOfTheHalvedStep)
{
  AllowFourTerms();
  EnterExponential();
  EnterEquation(Ref(new Algebraic("x", Ref(new Time))));
  SetStepAndEnd(1.0, 1.0);
  const std::vector<Row> rows = RunOutcome().Rows();
  EXPECT_EQ(rows.at(0).time, 0.5);
  EXPECT_EQ(rows.at(0).values.at(0), 0.5);
}

TEST_F(IntegrationTest, AFixedStepIsNeverHalved)
{
  AllowFourTerms();
  global->_FIXEDSTEP = true;
  EnterExponential();
  SetStepAndEnd(1.0, 1.0);
  const RunOutcome run;
  EXPECT_TRUE(run.Comments("#(COMP)").empty());
  EXPECT_EQ(run.Times(), (Times{0, 1}));
  EXPECT_EQ(run.Rows()[0].order, 5);
}

// --- Growing ---

TEST_F(IntegrationTest, AStepThatNeedsFewTermsGrowsFromTheSecondPassOn)
{
  EnterLine();
  SetStepAndEnd(0.5, 1.0);
  const RunOutcome run;
  EXPECT_EQ(run.results,
            "  2  0.00000000000e+00  5.00000000000e-01\n"
            "  2  5.00000000000e-01  1.00000000000e+00\n"
            "  2  1.00000000000e+00  1.50000000000e+00\n");
  EXPECT_EQ(run.commentary,
            "#(TST) Max(y)=0  Min(y)=0  Diff=0\n"
            "#(TST) Max(y)=0  Min(y)=0  Diff=0\n"
            "#(COMP) Step increased to  6.00000000000e-01\tTime=  0.00000000000e+00\n");
}

TEST_F(IntegrationTest, FewTermsAreATwelfthOfTheTermCount)
{
  const struct {
    int termCount;
    bool grows;
  } rows[] = {{35, false}, {36, true}};
  for (const auto& row : rows) {
    const ScopedGlobal inner;
    inner->SetTermCount(row.termCount);
    MakeVariable("y", 1.0, Series({1.0, 1.0}));
    SetStepAndEnd(0.5, 1.0);
    const RunOutcome run;
    EXPECT_EQ(run.Rows().at(0).order, 3);
    EXPECT_EQ(!run.Comments("#(COMP) Step increased").empty(), row.grows) << row.termCount;
  }
}

TEST_F(IntegrationTest, AFixedStepNeverGrows)
{
  EnterLine();
  global->_FIXEDSTEP = true;
  SetStepAndEnd(0.25, 1.0);
  const RunOutcome run;
  EXPECT_EQ(run.Times(), (Times{0, 0.25, 0.5, 0.75, 1}));
  EXPECT_TRUE(run.Comments("#(COMP)").empty());
}

// --- The stiffness test: each of these runs has four passes before the last ---

class StiffnessWatchTest : public IntegrationTest {
 protected:
  StiffnessWatchTest()
  {
    global->_FIXEDSTEP = true;
    SetStepAndEnd(0.25, 1.0);
  }

  static std::size_t Tests() { return RunOutcome().Comments("#(TST)").size(); }

  /// With this every system is stiff.
  static constexpr int kAlwaysStiff = -1;
};

TEST_F(StiffnessWatchTest, ASystemThatIsNotStiffIsTestedInEveryPassButTheLast)
{
  EnterExponential();
  EXPECT_EQ(Tests(), 4U);
}

TEST_F(StiffnessWatchTest, AStiffSystemIsNotTestedAgainWhileTheStepStays)
{
  global->_STIFFEXPDIFF = kAlwaysStiff;
  EnterExponential();
  EXPECT_EQ(Tests(), 1U);
}

TEST_F(StiffnessWatchTest, AStiffSystemIsTestedInEveryPassOnRequest)
{
  global->_STIFFEXPDIFF = kAlwaysStiff;
  global->_STIFFEVERYSTEP = true;
  EnterExponential();
  EXPECT_EQ(Tests(), 4U);
}

/// Every other pass skips the test, but a low order counts as a change, though the step stays.
TEST_F(StiffnessWatchTest, ALowOrderBringsTheTestBackEvenWithAFixedStep)
{
  global->_STIFFEXPDIFF = kAlwaysStiff;
  EnterLine();
  EXPECT_EQ(Tests(), 3U);
}

/// y' = x y with x = t, which enters the series with its value of the pass before: 0 in the first
/// two passes, where one term does. In the third the step is halved twice.
TEST_F(StiffnessWatchTest, AHalvedStepBringsTheTestBack)
{
  AllowFourTerms();
  global->_FIXEDSTEP = false;
  global->_STIFFEXPDIFF = kAlwaysStiff;
  const Ref x(new Algebraic("x", Ref(new Time)));
  const Ref y = MakeVariable("y", 1.0);
  EnterEquation(x);
  VariableOf(y).SetRightHandSide(Ref(kMultiply, x, y));
  SetStepAndEnd(1.0, 2.0);
  const RunOutcome run;
  EXPECT_EQ(run.Times(), (Times{0, 1, 1.25, 1.5, 1.75, 2}));
  EXPECT_EQ(run.Comments("#(COMP) Max ORDER").size(), 2U);
  EXPECT_EQ(run.Comments("#(TST)").size(), 2U);
}

// --- What is printed ---

TEST_F(IntegrationTest, APrintIntervalSkipsRowsAndAnnouncesThemOnce)
{
  EnterExponential();
  global->_FIXEDSTEP = true;
  mpf_set_d(global->_PRINTEVERY, 0.5);
  SetStepAndEnd(0.125, 1.0);
  const RunOutcome run;
  // A row is due when the next print time is before its time.
  EXPECT_EQ(run.Times(), (Times{0, 0.625, 1}));
  EXPECT_EQ(run.Comments("#(INFO)"),
            (Lines{"#(INFO) 4 results not printed", "#(INFO) 2 results not printed"}));
}

TEST_F(IntegrationTest, TheRowAtTmaxIsPrintedWhateverTheInterval)
{
  EnterExponential();
  global->_FIXEDSTEP = true;
  mpf_set_d(global->_PRINTEVERY, 100.0);
  SetStepAndEnd(0.25, 1.0);
  const RunOutcome run;
  EXPECT_EQ(run.Times(), (Times{0, 1}));
  EXPECT_EQ(run.Comments("#(INFO)"), Lines{"#(INFO) 3 results not printed"});
  EXPECT_TRUE(IsExactly(0, global->_PRINTEVERY));
}

TEST_F(IntegrationTest, WithOnlyTmaxWantedTheLoopPrintsNothing)
{
  EnterExponential();
  global->_PRINTONLYTMAX = true;
  EXPECT_EQ(RunOutcome().results, "");
}

TEST_F(IntegrationTest, ColumnsAreOrderedByName)
{
  MakeVariable("y10", 1.0, Constant(0));
  MakeVariable("y2", 2.0, Constant(0));
  MakeVariable("Y", 3.0, Constant(0));
  EXPECT_EQ(RunOutcome().Rows().at(0).values, (std::vector<double>{3, 1, 2}));
}

TEST_F(IntegrationTest, DumpsAreWrittenWithEachPrintedRow)
{
  for (const int mode : {0, 1, 2, 3}) {
    const ScopedGlobal inner;
    EnterExponential();
    inner->_FIXEDSTEP = true;
    inner->_DUMPDY = mode;
    mpf_set_d(inner->_PRINTEVERY, 100.0);
    SetStepAndEnd(0.25, 1.0);
    const RunOutcome run;
    // Two of the five rows are printed.
    const std::size_t termDumps = (mode & 1) != 0 ? 2 : 0;
    const std::size_t derivativeDumps = (mode & 2) != 0 ? 2 : 0;
    EXPECT_EQ(run.Comments("#(DY) Dumping DYs (START)").size(), termDumps) << mode;
    EXPECT_EQ(run.Comments("#(DER) Dumping Derivatives (START)").size(), derivativeDumps) << mode;
    if (termDumps != 0) {
      EXPECT_EQ(run.Comments("#(DY) Dumping DYs (TIME)").back(),
                "#(DY) Dumping DYs (TIME)   7.50000000000e-01");
    }
  }
}

// --- The steady state ---

TEST_F(IntegrationTest, ASteadyStateEndsTheRunAfterThatManyPasses)
{
  MakeVariable("y", 1.0, Constant(0));
  global->_FIXEDSTEP = true;
  global->_STEADYSTOP = 3;
  SetStepAndEnd(0.25, 1.0);
  EXPECT_EQ(RunOutcome().Times(), (Times{0, 0.25, 0.5}));
}

/// Behind Tmax the step is 0, so that nothing moves any more.
TEST_F(IntegrationTest, AWaitForTheSteadyStateGoesOnBeyondTmaxAndPrintsEveryRow)
{
  EnterLine();
  global->_FIXEDSTEP = true;
  global->_STEADYSTOP = 2;
  mpf_set_d(global->_PRINTEVERY, 100.0);
  SetStepAndEnd(0.25, 0.5);
  EXPECT_EQ(RunOutcome().results,
            "  2  0.00000000000e+00  2.50000000000e-01\n"
            "  2  5.00000000000e-01  7.50000000000e-01\n"
            "  1  5.00000000000e-01  7.50000000000e-01\n"
            "  1  5.00000000000e-01  7.50000000000e-01\n");
}

TEST_F(IntegrationTest, EveryEquationMustBeSteadyInConsecutivePasses)
{
  // x moves in the first step only.
  MakeVariable("y", 1.0, Constant(0));
  EnterEquation(Ref(new Algebraic("x", Constant(5))));
  global->_FIXEDSTEP = true;
  global->_STEADYSTOP = 2;
  SetStepAndEnd(0.25, 1.0);
  EXPECT_EQ(RunOutcome().Times(), (Times{0, 0.25, 0.5}));
}

/// x = trunc(t) rests four passes, moves at t = 1 and rests again.
TEST_F(IntegrationTest, AMoveBeginsTheWaitForTheSteadyStateAnew)
{
  EnterEquation(Ref(new Algebraic("x", Ref(kTrunc, Ref(new Time)))));
  global->_FIXEDSTEP = true;
  global->_STEADYSTOP = 5;
  SetStepAndEnd(0.25, 1.25);
  EXPECT_EQ(RunOutcome().Times(), (Times{0, 0.25, 0.5, 0.75, 1, 1.25, 1.25, 1.25, 1.25, 1.25}));
}

TEST_F(IntegrationTest, ARejectedPassCountsAsSteadyToo)
{
  AllowFourTerms();
  const Ref y = EnterExponential();
  VariableOf(y).SetStartValue(Mpf(0x1p-10));
  global->_STEADYSTOP = 2;
  SetStepAndEnd(1.0, 1.0);
  EXPECT_EQ(RunOutcome().Times(), Times{0.5});
}

// --- Odd settings ---

TEST_F(IntegrationTest, WithoutZeroTermsEveryNewValueIs0)
{
  EnterExponential();
  global->_FIXEDSTEP = true;
  SetZeroTerms("0");
  SetStepAndEnd(0.5, 1.0);
  const RunOutcome run;
  EXPECT_EQ(run.results,
            "  0  0.00000000000e+00  0.00000000000e+00\n"
            "  0  5.00000000000e-01  0.00000000000e+00\n"
            "  0  1.00000000000e+00  0.00000000000e+00\n");
  EXPECT_EQ(run.Comments("#(TST)"), Lines(2, "#(TST) Max()=3322  Min()=3322  Diff=0"));
}

TEST_F(IntegrationTest, ASystemWithoutEquationsRunsToTmax)
{
  SetStepAndEnd(0.5, 1.0);
  global->_FIXEDSTEP = true;
  EXPECT_EQ(RunOutcome().Times(), (Times{0, 0.5, 1}));
}

// --- Periods ---

TEST_F(IntegrationTest, AWatchedEquationThatDoesNotExistIsReportedOnceAndTheRunGoesOn)
{
  EnterLine();
  global->_PERIODEQ = "nosuch";
  global->_PERIODSAME = 1;
  global->_FIXEDSTEP = true;
  SetStepAndEnd(0.5, 1.0);
  const RunOutcome run;
  EXPECT_EQ(run.Comments("#(WARN)"),
            Lines{"#(WARN) Equation nosuch doesn't exist. The period. detection is disabled."});
  EXPECT_EQ(run.Times(), (Times{0, 0.5, 1}));
}

TEST_F(IntegrationTest, AWatchWithoutRoomForSamplesRunsToTmax)
{
  MakeVariable("y", 1.0, Constant(0));
  global->_PERIODEQ = "y";
  global->_PERIODSAME = 1;
  global->_PERIODBUF = 0;
  global->_FIXEDSTEP = true;
  SetStepAndEnd(0.5, 1.0);
  const RunOutcome run;
  EXPECT_TRUE(run.Comments("#(WARN)").empty());
  EXPECT_EQ(run.Times(), (Times{0, 0.5, 1}));
}

}  // namespace
}  // namespace varno
