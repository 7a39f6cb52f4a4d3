#include "solve/integration/tape_cut.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;

/// The lines of one kind, or of one function.
std::vector<bool> LinesOf(const Tape& tape, Operation function)
{
  std::vector<bool> found;
  for (const Line& line : tape.lines)
    found.push_back(line.kind == LineKind::kIntegralOfProduct && line.function == function);
  return found;
}

std::vector<bool> LinesOf(const Tape& tape, LineKind kind)
{
  std::vector<bool> found;
  for (const Line& line : tape.lines) found.push_back(line.kind == kind);
  return found;
}

std::size_t Count(const std::vector<bool>& lines)
{
  return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), true));
}

// y' = x + exp(-t^2): without exp neither t^2 nor t nor -t^2 is needed.
TEST(TapeCut, LeavesOutWhatIsNeededForZeroedLinesOnly)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x + Function(Operation::kExp, -(m.Time() * m.Time())));
  const Tape tape = Compile(m.Finished());
  const TapeCut cut = CutAt(tape, LinesOf(tape, Operation::kExp));
  EXPECT_EQ(LinesOf(tape, Operation::kExp), cut.held);
  EXPECT_EQ(4U, Count(cut.leftOut));
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (tape.lines[id].kind != LineKind::kTime) continue;
    EXPECT_TRUE(cut.leftOut[id]);
  }
}

// y' = sin(t) + (cos(t))^2: cos cannot be 0 while sin is needed, which is made of it.
TEST(TapeCut, KeepsWhatRecurrencesNeed)
{
  Equations m;
  const Expression cos = Function(Operation::kCos, m.Time());
  m.SetDerivative(m.Variable("y", 0), Function(Operation::kSin, m.Time()) + cos * cos);
  const Tape tape = Compile(m.Finished());
  EXPECT_EQ(0U, Count(CutAt(tape, LinesOf(tape, Operation::kCos)).leftOut));
  // The square of cos can.
  const TapeCut cut = CutAt(tape, LinesOf(tape, LineKind::kSquare));
  EXPECT_EQ(LinesOf(tape, LineKind::kSquare), cut.held);
  EXPECT_EQ(1U, Count(cut.leftOut));
}

/// Those of the lines behind the states whose bits are set.
std::vector<bool> Candidates(const Tape& tape, std::uint32_t mask)
{
  std::vector<bool> candidates(tape.lines.size(), false);
  for (std::size_t id = tape.rightHandSides.size(); id < candidates.size(); ++id)
    candidates[id] = ((mask >> (id - tape.rightHandSides.size())) & 1) != 0;
  return candidates;
}

// Every set of candidates: those that are not cuttable change nothing.
TEST(TapeCut, LiesAtCuttableLinesOnly)
{
  for (const Operation function :
       {Operation::kSin, Operation::kTan, Operation::kTanh, Operation::kAtan, Operation::kErf}) {
    for (const bool isNested : {false, true}) {
      Equations m;
      const Expression x = m.Variable("x", Rational(1, 2));
      const Expression argument = isNested ? Function(Operation::kCos, x) : x * x;
      m.SetDerivative(x, Function(function, argument) + x);
      const Tape tape = Compile(m.Finished());
      const std::vector<bool> cuttable = CuttableLines(tape);
      const std::size_t count = tape.lines.size() - tape.rightHandSides.size();
      ASSERT_LT(count, 16U);
      EXPECT_LT(Count(cuttable), tape.lines.size());
      for (std::uint32_t mask = 0; mask < 1U << count; ++mask) {
        const std::vector<bool> all = Candidates(tape, mask);
        std::vector<bool> some = all;
        for (std::size_t id = 0; id < some.size(); ++id) some[id] = some[id] && cuttable[id];
        const TapeCut cut = CutAt(tape, all), same = CutAt(tape, some);
        ASSERT_EQ(cut.held, same.held) << static_cast<int>(function) << ", lines " << mask;
        ASSERT_EQ(cut.leftOut, same.leftOut) << static_cast<int>(function) << ", lines " << mask;
      }
    }
  }
}

// 1 + t^2, of which atan is made, is no longer its derivative when t^2 is 0; for an argument that
// is 0 it is.
TEST(TapeCut, KeepsDerivativesOfFunctions)
{
  Equations m;
  const Expression bell = Function(Operation::kExp, -(m.Time() * m.Time()));
  m.SetDerivative(m.Variable("y", 0), Function(Operation::kAtan, bell));
  const Tape tape = Compile(m.Finished());
  std::vector<bool> squareOfBell(tape.lines.size(), false);
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    squareOfBell[id] = tape.lines[id].kind == LineKind::kSquare &&
                       tape.lines[tape.lines[id].a].kind == LineKind::kIntegralOfProduct;
  }
  ASSERT_EQ(1U, Count(squareOfBell));
  EXPECT_EQ(0U, Count(CutAt(tape, squareOfBell).leftOut));
  EXPECT_EQ(LinesOf(tape, Operation::kExp), CutAt(tape, LinesOf(tape, Operation::kExp)).held);
}

// x' = pulse does not move, nor does y' = x - 1 behind it; z does.
TEST(TapeCut, StatesFedByNothingAreStill)
{
  Equations m;
  const Expression y = m.Variable("y", 1), x = m.Variable("x", 1), z = m.Variable("z", 1);
  m.SetDerivative(x, Function(Operation::kExp, m.Time()));
  m.SetDerivative(y, x - 1);
  m.SetDerivative(z, x + m.Time());
  const Tape tape = Compile(m.Finished());
  const std::vector<bool> still =
      StillLines(tape, CutAt(tape, LinesOf(tape, Operation::kExp)).leftOut);
  EXPECT_TRUE(still[0]);
  EXPECT_TRUE(still[1]);
  EXPECT_FALSE(still[2]);
}

}  // namespace
}  // namespace varno::solve
