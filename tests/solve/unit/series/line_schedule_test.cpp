#include "solve/series/line_schedule.h"

#include <algorithm>
#include <cstddef>
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

/// A ring of oscillators with a spring that hardens.
Tape Ring(int count)
{
  Equations m;
  std::vector<Expression> x, v;
  for (int i = 0; i < count; ++i) x.push_back(m.Variable("x" + std::to_string(i), 1));
  for (int i = 0; i < count; ++i) v.push_back(m.Variable("v" + std::to_string(i), 0));
  for (int i = 0; i < count; ++i) {
    const auto at = [&](int j) { return x[static_cast<std::size_t>((j + count) % count)]; };
    m.SetDerivative(at(i), v[static_cast<std::size_t>(i)] + 0 * at(i));
    m.SetDerivative(v[static_cast<std::size_t>(i)],
                    at(i - 1) - 2 * at(i) + at(i + 1) - at(i) * at(i) * at(i));
  }
  return Compile(m.Finished());
}

/// Where the term of a line is made.
struct Place {
  std::size_t phase, position;
  int member;
};

std::vector<Place> PlacesIn(const LineSchedule& schedule, std::size_t lineCount)
{
  std::vector<Place> places(lineCount, {0, 0, -1});
  for (int member = 0; member < schedule.MemberCount(); ++member) {
    std::size_t position = 0;
    for (std::size_t phase = 0; phase < schedule.PhaseCount(); ++phase) {
      for (; position < schedule.End(member, phase); ++position)
        places[schedule.Lines(member)[position]] = {phase, position, member};
    }
    EXPECT_EQ(position, schedule.Lines(member).size());
  }
  return places;
}

TEST(LineSchedule, OfOneThreadIsTheTape)
{
  const Tape tape = Ring(5);
  const LineSchedule schedule(tape);
  ASSERT_EQ(schedule.MemberCount(), 1);
  EXPECT_EQ(schedule.PhaseCount(), 1U);
  ASSERT_EQ(schedule.Lines(0).size(), tape.lines.size());
  for (LineId id = 0; id < tape.lines.size(); ++id) EXPECT_EQ(schedule.Lines(0)[id], id);
}

// Of a line and an operand, that which the tape has first is made first, on the same thread or in
// an earlier phase.
TEST(LineSchedule, KeepsLinesAndOperandsInOrder)
{
  const Tape tape = Ring(400);
  for (const int members : {2, 3}) {
    const LineSchedule schedule(tape, 108, 27, members);
    EXPECT_TRUE(schedule.IsWorthwhile());
    const std::vector<Place> places = PlacesIn(schedule, tape.lines.size());
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      ASSERT_GE(places[id].member, 0);
      for (const LineId operand : Operands(tape, id)) {
        if (operand == id) continue;
        const Place &first = places[std::min(id, operand)], &second = places[std::max(id, operand)];
        EXPECT_TRUE(first.phase < second.phase ||
                    (first.phase == second.phase && first.member == second.member &&
                     first.position < second.position))
            << id << " " << operand;
      }
    }
  }
}

TEST(LineSchedule, GivesNeighboursToOneThread)
{
  const Tape tape = Ring(400);
  const std::vector<Place> places = PlacesIn(LineSchedule(tape, 108, 27, 2), tape.lines.size());
  int apart = 0, all = 0;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    for (const LineId operand : Operands(tape, id)) {
      ++all;
      if (places[id].member != places[operand].member) ++apart;
    }
  }
  EXPECT_LT(apart * 10, all);
}

TEST(LineSchedule, SharesNothingSmall)
{
  EXPECT_FALSE(IsWorthSharing(Ring(3), 108, 27, 2));
  EXPECT_FALSE(IsWorthSharing(Ring(400), 108, 27, 1));
  EXPECT_TRUE(IsWorthSharing(Ring(400), 108, 27, 2));
  EXPECT_EQ(LineSchedule(Ring(3), 108, 27, 2).Lines(1).size(), 0U);
}

}  // namespace
}  // namespace varno::solve
