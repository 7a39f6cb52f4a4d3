#include "varno/solver/period.h"

#include <csignal>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/captured_output.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/core/global_data.h"

namespace varno {

using namespace support;
namespace {

class PeriodSamplesTest : public testing::Test {
 protected:
  PeriodSamplesTest() { mpf_set_d(global->_ACCURACY, 0.25); }

  /// What each of the values in turn is answered with.
  static std::vector<bool> Answers(int bufferSize, const std::vector<double>& values)
  {
    PeriodSamples samples(bufferSize);
    std::vector<bool> answers;
    for (const double y : values) answers.push_back(samples.Repeats(Mpf(y)));
    return answers;
  }

  ScopedGlobal global;
};

using Bools = std::vector<bool>;

TEST_F(PeriodSamplesTest, AValueThatComesBackIsAPeriod)
{
  EXPECT_EQ(Answers(2, {5, 5}), (Bools{false, true}));
}

TEST_F(PeriodSamplesTest, WithoutRoomForASampleNothingComesBack)
{
  for (const int bufferSize : {-1, 0, 1}) {
    EXPECT_EQ(Answers(bufferSize, {5, 5, 5}), (Bools{false, false, false})) << bufferSize;
  }
}

TEST_F(PeriodSamplesTest, AllSamplesMustHaveComeBackEquallyOftenTheLatestOneLast)
{
  EXPECT_EQ(Answers(10, {1, 2, 1, 2}), (Bools{false, false, false, true}));
  EXPECT_EQ(Answers(10, {1, 2, 2, 1, 2}), (Bools{false, false, false, false, false}));
  EXPECT_EQ(Answers(10, {1, 2, 2, 1}), (Bools{false, false, false, false}));
  EXPECT_EQ(Answers(10, {1, 2, 3, 1, 2, 3}), (Bools{false, false, false, false, false, true}));
  EXPECT_EQ(Answers(10, {1, 2, 3, 1, 3}), (Bools{false, false, false, false, false}));
  EXPECT_EQ(Answers(10, {1, 2, 1, 1, 2, 2}), (Bools{false, false, false, false, false, true}));
}

TEST_F(PeriodSamplesTest, OneEntryOfTheBufferIsNeverUsed)
{
  // There is room for 1 and 2 only, and 2 is the latest.
  EXPECT_EQ(Answers(3, {1, 2, 3, 3, 1, 2}), (Bools{false, false, false, false, false, true}));
}

TEST_F(PeriodSamplesTest, ADistanceOfExactlyTheAccuracyIsAnotherValue)
{
  EXPECT_EQ(Answers(2, {5, 5.25}), (Bools{false, false}));
  EXPECT_EQ(Answers(2, {5, 4.75}), (Bools{false, false}));
  EXPECT_EQ(Answers(2, {5, 5.125}), (Bools{false, true}));
  EXPECT_EQ(Answers(2, {5, 4.875}), (Bools{false, true}));
}

TEST_F(PeriodSamplesTest, OnlyTheFirstSampleThatMatchesCounts)
{
  // 5.2 is near both 5 and 5.4, which are not near one another.
  EXPECT_EQ(Answers(10, {5, 5.4, 5.2, 5.4}), (Bools{false, false, false, true}));
}

class PeriodWatchTest : public testing::Test {
 protected:
  ScopedGlobal global;
};

TEST_F(PeriodWatchTest, AnEquationThatDoesNotExistSwitchesItOff)
{
  global->_PERIODEQ = "nosuch";
  global->_PERIODSAME = 3;
  const CapturedOutput output;
  PeriodWatch watch;
  watch.Arm();
  EXPECT_EQ(output.Commentary(),
            "#(WARN) Equation nosuch doesn't exist. The period. detection is disabled.\n");
  EXPECT_EQ(global->_PERIODSAME, 0);
  EXPECT_FALSE(watch.FindsPeriod());
}

TEST_F(PeriodWatchTest, ItIsOffWithoutACount)
{
  global->_PERIODEQ = "nosuch";
  for (const int count : {0, -1}) {
    global->_PERIODSAME = count;
    const CapturedOutput output;
    PeriodWatch watch;
    watch.Arm();
    EXPECT_EQ(output.Commentary(), "") << count;
    EXPECT_FALSE(watch.FindsPeriod()) << count;
  }
}

TEST_F(PeriodWatchTest, ARoomForSamplesEndsInASegmentationFault)
{
  MakeVariable("y", 1.0);
  global->_PERIODEQ = "y";
  global->_PERIODSAME = 1;
  for (const int bufferSize : {2, 50}) {
    global->_PERIODBUF = bufferSize;
    const auto arm = [] {
      std::signal(SIGSEGV, SIG_DFL);
      PeriodWatch().Arm();
    };
    EXPECT_EXIT(arm(), testing::KilledBySignal(SIGSEGV), "") << bufferSize;
  }
}

TEST_F(PeriodWatchTest, WithoutRoomForSamplesItNeverFindsAPeriod)
{
  MakeVariable("y", 1.0, Constant(0));
  global->_PERIODEQ = "y";
  global->_PERIODSAME = 1;
  for (const int bufferSize : {1, 0, -1}) {
    global->_PERIODBUF = bufferSize;
    PeriodWatch watch;
    watch.Arm();
    for (int pass = 0; pass < 5; ++pass) {
      EXPECT_FALSE(watch.FindsPeriod()) << bufferSize;
      AcceptStep();
    }
  }
}

/// The derivative is compared with the accuracy, not with the value that the user gave.
TEST_F(PeriodWatchTest, AValueIsTakenWhereTheDerivativeIsWithin0AndTwiceTheAccuracy)
{
  mpf_set_d(global->_ACCURACY, 0.25);
  mpf_set_d(global->_PERIODDERIV, 7.0);
  global->_PERIODEQ = "y";
  global->_PERIODSAME = 1;
  global->_PERIODBUF = 0;
  const struct {
    double derivative;
    bool taken;
  } rows[] = {{0.0, true},    {0.25, true},    {0.5, true},
              {0.501, false}, {-0.001, false}, {7.0, false}};
  for (const auto& row : rows) {
    const Expr::Ref derivative = Series({row.derivative});
    MakeVariable("y", 1.0, derivative);
    PeriodWatch watch;
    watch.Arm();
    EXPECT_FALSE(watch.FindsPeriod());
    EXPECT_EQ(!SeriesOf(derivative).computedTerms.empty(), row.taken) << row.derivative;
  }
}

}  // namespace
}  // namespace varno
