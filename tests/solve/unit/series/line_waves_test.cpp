#include "solve/series/line_waves.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solve/tape/below.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

/// Cells that react, each bound to its neighbours, on a ring.
Tape Ring(int count)
{
  Equations m;
  std::vector<Expression> x;
  for (int i = 0; i < count; ++i) x.push_back(m.Variable("x" + std::to_string(i), 1));
  for (int i = 0; i < count; ++i) {
    const auto at = [&](int j) { return x[static_cast<std::size_t>((j + count) % count)]; };
    m.SetDerivative(at(i), at(i - 1) - 2 * at(i) + at(i + 1) - at(i) * at(i) * at(i));
  }
  return Compile(m.Finished());
}

/// Each variable is driven by all.
Tape AllWithAll(int count)
{
  Equations m;
  std::vector<Expression> x;
  for (int i = 0; i < count; ++i) x.push_back(m.Variable("x" + std::to_string(i), 1));
  Expression sum = x.front();
  for (int i = 1; i < count; ++i) sum = sum + x[static_cast<std::size_t>(i)];
  for (int i = 0; i < count; ++i)
    m.SetDerivative(x[static_cast<std::size_t>(i)], sum * x[static_cast<std::size_t>(i)]);
  return Compile(m.Finished());
}

/// By line, how many terms of a wave there are.
using Made = std::vector<int>;

/// Makes terms as the stretches say; each must be the next one of its line, and what it reads be
/// there, in lines that are not being set by others. Returns the most lines that have some of their
/// terms, but not all, at a time.
int Make(Made& made, const Tape& tape, std::span<const LineId> lines,
         std::span<const LineWaves::Stretch> stretches, const std::vector<bool>& areOthers = {})
{
  int begun = 0, mostBegun = 0;
  for (const auto& [first, last, order] : stretches) {
    for (std::uint32_t i = first; i < last; ++i) {
      const LineId id = lines[i];
      EXPECT_EQ(made[id], order);
      for (const LineId operand : Operands(tape, id)) {
        EXPECT_GE(made[operand], operand < id ? order + 1 : order) << id << " reads " << operand;
        EXPECT_FALSE(!areOthers.empty() && areOthers[operand]) << id << " reads " << operand;
      }
      if (++made[id] == 1) ++begun;
      if (made[id] == LineWaves::kOrders) --begun;
      mostBegun = std::max(mostBegun, begun);
    }
  }
  return mostBegun;
}

TEST(LineWaves, MakeEachTermWhenWhatItReadsIsThere)
{
  const Tape tape = Ring(400);
  for (const int members : {1, 2, 3}) {
    const LineSchedule schedule(tape, 108, 27, members);
    const LineWaves waves(tape, schedule, 100);
    Made all(tape.lines.size(), 0);
    for (int member = 0; member < members; ++member) {
      // Without what others make meanwhile.
      Made own(tape.lines.size(), 0);
      std::vector<bool> areOthers(tape.lines.size(), true);
      for (const LineId id : schedule.Lines(member)) areOthers[id] = false;
      Make(own, tape, schedule.Lines(member), waves.Stretches(member), areOthers);
      for (const LineId id : schedule.Lines(member)) all[id] = own[id];
    }
    std::vector<int> owners(tape.lines.size(), -1);
    for (int member = 0; member < members; ++member) {
      for (const LineId id : waves.RestLines(member)) owners[id] = member;
    }
    for (int member = 0; member < members; ++member) {
      std::vector<bool> areOthers(tape.lines.size());
      for (LineId id = 0; id < owners.size(); ++id)
        areOthers[id] = owners[id] >= 0 && owners[id] != member;
      Make(all, tape, waves.RestLines(member), waves.Rest(member), areOthers);
    }
    EXPECT_EQ(all, Made(tape.lines.size(), LineWaves::kOrders)) << members;
    EXPECT_EQ(waves.HasRest(), members > 1);
  }
}

TEST(LineWaves, ShareWhatIsLeft)
{
  // Between two members of a ring there are two places, far from each other.
  const Tape tape = Ring(400);
  const LineWaves waves(tape, LineSchedule(tape, 108, 27, 2), 100);
  const auto linesOfCell = static_cast<double>(tape.lines.size()) / 400;
  for (const int member : {0, 1})
    EXPECT_NEAR(static_cast<double>(waves.RestLines(member).size()),
                2 * LineWaves::kOrders * linesOfCell, 2 * linesOfCell);
}

TEST(LineWaves, LeaveLittleBehind)
{
  const Tape large = Ring(1000);
  EXPECT_TRUE(LineWaves(large, LineSchedule(large, 108, 27, 2), 100).IsWorthwhile());
  // What stands between two members is as much in a small system.
  const Tape tape = Ring(250);
  EXPECT_FALSE(LineWaves(tape, LineSchedule(tape, 108, 27, 2), 100).IsWorthwhile());
  const LineWaves waves(tape, LineSchedule(tape, 108, 27, 1), 100);
  EXPECT_TRUE(waves.IsWorthwhile());
  EXPECT_TRUE(waves.RestLines(0).empty());
  EXPECT_FALSE(waves.HasRest());
}

TEST(LineWaves, HaveFewLinesInUseAtATime)
{
  const Tape tape = Ring(2000);
  constexpr int kAtOnce = 200;
  const LineSchedule schedule(tape, 108, 27, 1);
  const LineWaves waves(tape, schedule, kAtOnce);
  Made made(tape.lines.size(), 0);
  // Those of a group, and on both sides, and at both ends of the ring, some that wait.
  const int lines = static_cast<int>(tape.lines.size()) / 2000;
  EXPECT_LT(Make(made, tape, schedule.Lines(0), waves.Stretches(0)),
            kAtOnce + 4 * lines * LineWaves::kOrders);
}

TEST(LineWaves, AreOfNoUseWhereAllReadAll)
{
  const Tape tape = AllWithAll(200);
  const LineSchedule schedule(tape, 108, 27, 1);
  const LineWaves waves(tape, schedule, 50);
  EXPECT_FALSE(waves.IsWorthwhile());
  Made made(tape.lines.size(), 0);
  Make(made, tape, schedule.Lines(0), waves.Stretches(0));
  EXPECT_EQ(made, Made(tape.lines.size(), LineWaves::kOrders));
}

}  // namespace
}  // namespace varno::solve
