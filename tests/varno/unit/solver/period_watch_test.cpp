#include <csignal>
#include <vector>

#include <gtest/gtest.h>

#include "tests/varno/support/runtime_child.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/expr/differential.h"
#include "varno/expr/number.h"
#include "varno/solver/period.h"

namespace varno {
namespace {

/// A run's record with an accuracy that doubles represent exactly.
class PeriodTest : public testing::Test {
 protected:
  PeriodTest() { mpf_set_d(global->_ACCURACY, kAccuracy); }

  static constexpr double kAccuracy = 0.25;

  ScopedGlobal global;
};

// --- The samples

struct Visit {
  double y;
  bool repeats;
};

struct SamplesRow {
  const char* what;
  int bufferSize;
  std::vector<Visit> visits;
};

// Two values are equal when they differ by less than 0.25.
const SamplesRow kSampleRows[] = {
    {"a negative buffer stores nothing", -3, {{1, false}, {1, false}, {1, false}}},
    {"a buffer of 0 stores nothing", 0, {{1, false}, {1, false}, {1, false}}},
    {"a buffer of 1 stores nothing", 1, {{1, false}, {1, false}, {1, false}}},
    {"the first return of the only sample is a period", 2, {{1, false}, {1, true}}},
    {"a sample returns as often as it likes", 2, {{1, false}, {1, true}, {1, true}, {1, true}}},
    {"a value near a sample is its return", 2, {{1, false}, {1.2, true}, {0.8, true}}},
    {"a value at the accuracy from a sample is another one",
     2,
     {{1, false}, {1.25, false}, {0.75, false}}},
    {"one entry of the buffer is never used", 2, {{1, false}, {2, false}, {2, false}}},
    {"all samples return in order", 3, {{1, false}, {2, false}, {1, false}, {2, true}}},
    {"two rounds are as good as one",
     3,
     {{1, false}, {2, false}, {1, false}, {2, true}, {1, false}, {2, true}}},
    {"the latest sample alone has returned", 3, {{1, false}, {2, false}, {2, false}}},
    {"all samples have returned, the latest one not last",
     3,
     {{1, false}, {2, false}, {2, false}, {1, false}}},
    {"a sample has returned more often than the latest",
     3,
     {{1, false}, {2, false}, {1, false}, {1, false}, {2, false}}},
    {"only the first of two near samples is counted",
     3,
     {{1, false}, {1.375, false}, {1.1875, false}, {1.5, true}}},
    {"a value without room is no sample",
     3,
     {{1, false}, {2, false}, {3, false}, {1, false}, {3, false}, {2, true}}},
    {"a sample that came later has to return as often",
     4,
     {{1, false}, {1, true}, {2, false}, {2, true}, {3, false}, {3, true}, {3, false}}},
    {"a middle sample has returned most often",
     4,
     {{1, false}, {2, false}, {3, false}, {1, false}, {2, false}, {2, false}, {3, false}}},
};

TEST_F(PeriodTest, SamplesRepeatWhenTheLatestReturnsAsOftenAsAll)
{
  for (const SamplesRow& row : kSampleRows) {
    SCOPED_TRACE(row.what);
    PeriodSamples samples(row.bufferSize);
    for (std::size_t i = 0; i < row.visits.size(); ++i) {
      EXPECT_EQ(samples.Repeats(Mpf(row.visits[i].y)), row.visits[i].repeats) << "visit " << i;
    }
  }
}

// --- The watch

/// Enters the equation y' = derivative with y(0) = 1 and watches it, as -r y:3:0 does.
void WatchConstantDerivative(ScopedGlobal& global, double derivative)
{
  const Expr::Ref y(new Differential("y", Expr::Ref(new Number(derivative))));
  VariableOf(y).SetStartValue(global->_ONE);
  global->_EQUATIONS.emplace("y", y);
  global->_PERIODEQ = "y";
  global->_PERIODSAME = 3;
}

/// The outcome of the second test of a watch with room for one sample. Within a step the value
/// stays, so that it repeats if it has been taken.
bool FindsPeriodInSecondTest(ScopedGlobal& global)
{
  global->_PERIODBUF = 2;
  PeriodWatch watch;
  // To arm a watch with room for samples would end the process.
  global->_PERIODBUF = 0;
  watch.Arm();
  EXPECT_FALSE(watch.FindsPeriod());
  return watch.FindsPeriod();
}

TEST_F(PeriodTest, WatchTakesTheValueWhereTheDerivativeIsWithinTheAccuracyOfTheAccuracy)
{
  struct Row {
    double derivative;
    bool taken;
  };
  for (const Row& row : {Row{-0.0078125, false}, Row{0, true}, Row{0.25, true}, Row{0.5, true},
                         Row{0.5078125, false}, Row{3, false}}) {
    SCOPED_TRACE(row.derivative);
    ScopedGlobal own;
    mpf_set_d(own->_ACCURACY, kAccuracy);
    WatchConstantDerivative(own, row.derivative);
    EXPECT_EQ(FindsPeriodInSecondTest(own), row.taken);
  }
}

TEST_F(PeriodTest, WatchDoesNotUseTheDerivativeOfTheOption)
{
  WatchConstantDerivative(global, 0);
  mpf_set_d(global->_PERIODDERIV, 7);
  EXPECT_TRUE(FindsPeriodInSecondTest(global));
}

TEST_F(PeriodTest, WatchThatIsOffFindsNothing)
{
  WatchConstantDerivative(global, 0);
  global->_PERIODSAME = 0;
  EXPECT_FALSE(FindsPeriodInSecondTest(global));
}

TEST_F(PeriodTest, WatchWithoutRoomForSamplesFindsNothing)
{
  WatchConstantDerivative(global, 0);
  for (const int size : {-1, 0, 1}) {
    SCOPED_TRACE(size);
    global->_PERIODBUF = size;
    PeriodWatch watch;
    watch.Arm();
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(watch.FindsPeriod());
  }
}

TEST_F(PeriodTest, ArmingWithRoomForSamplesEndsInASegmentationFault)
{
  WatchConstantDerivative(global, 0);
  for (const int size : {2, 3, 50}) {
    SCOPED_TRACE(size);
    global->_PERIODBUF = size;
    const ChildOutcome child = RunInChild([] {
      std::signal(SIGSEGV, SIG_DFL);  // an instrumented program has a handler of its own
      PeriodWatch().Arm();
    });
    EXPECT_EQ(child.signal, SIGSEGV);
    EXPECT_EQ(child.err, "");
  }
}

TEST_F(PeriodTest, ArmingForAnUnknownEquationWarnsAndSwitchesTheWatchOff)
{
  WatchConstantDerivative(global, 0);
  global->_PERIODEQ = "nosuch";
  const ChildOutcome child = RunInChild([this] {
    PeriodWatch watch;
    watch.Arm();
    watch.Arm();
    EXPECT_EQ(global->_PERIODSAME, 0);
    EXPECT_FALSE(watch.FindsPeriod());
    if (HasFailure()) std::abort();
  });
  EXPECT_EQ(child.exitStatus, kBodyReturned) << child.out;
  EXPECT_EQ(child.err,
            "#(WARN) Equation nosuch doesn't exist. The period. detection is disabled.\n");
}

TEST_F(PeriodTest, ArmingAWatchThatIsOffDoesNothing)
{
  WatchConstantDerivative(global, 0);
  global->_PERIODSAME = -1;
  PeriodWatch().Arm();
  global->_PERIODEQ = "nosuch";
  const ChildOutcome child = RunInChild([] { PeriodWatch().Arm(); });
  EXPECT_EQ(child.exitStatus, kBodyReturned);
  EXPECT_EQ(child.err, "");
}

}  // namespace
}  // namespace varno
