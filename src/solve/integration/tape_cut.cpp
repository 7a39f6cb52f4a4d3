#include "solve/integration/tape_cut.h"

#include <utility>

#include "solve/tape/operands.h"

namespace varno::solve {

namespace {

/// Lines that are met on the way back from some of them.
class Walk {
 public:
  explicit Walk(const Tape& tape) : tape(tape), met(tape.lines.size(), false) {}

  void Meet(LineId line)
  {
    if (line == kNone || met[line]) return;
    met[line] = true;
    open.push_back(line);
  }
  void FinishByOperands()
  {
    while (!open.empty()) {
      const LineId id = open.back();
      open.pop_back();
      ForEachOperand(tape, tape.lines[id], [this](LineId operand) { Meet(operand); });
    }
  }
  /// By recurrences of functions, too. Does not go beyond the lines in `ends`.
  void Finish(const std::vector<bool>& ends)
  {
    while (!open.empty()) {
      const LineId id = open.back();
      open.pop_back();
      if (ends[id]) continue;
      ForEachOperand(tape, tape.lines[id], [this](LineId operand) { Meet(operand); });
      Meet(AuxiliaryOf(tape, id));
    }
  }
  const std::vector<bool>& Met() const { return met; }

 private:
  const Tape& tape;
  std::vector<bool> met;
  std::vector<LineId> open;
};

std::vector<bool> Met(const Tape& tape, const std::vector<bool>& cut)
{
  Walk walk(tape);
  for (const LineId rightHandSide : tape.rightHandSides) walk.Meet(rightHandSide);
  for (const LineId line : tape.watched) walk.Meet(line);
  walk.Finish(cut);
  return walk.Met();
}

/// Takes those candidates back that watched lines are made of within a step: what they do to these
/// is not bounded by what they do to the states.
void TakeBackWatched(const Tape& tape, std::vector<bool>& candidates)
{
  if (tape.watched.empty()) return;
  Walk walk(tape);
  for (const LineId line : tape.watched) walk.Meet(line);
  walk.Finish(std::vector<bool>(tape.lines.size(), false));
  for (LineId line = 0; line < candidates.size(); ++line)
    candidates[line] = candidates[line] && !walk.Met()[line];
}

/// Takes those candidates back that a function's recurrence meets otherwise than through the
/// arguments of the function: it would no longer belong to the function. Whether there were any.
bool TakeBackAuxiliaries(const Tape& tape, const std::vector<bool>& met,
                         std::vector<bool>& candidates)
{
  bool changed = false;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const LineId auxiliary = AuxiliaryOf(tape, id);
    if (!met[id] || candidates[id] || auxiliary == kNone) continue;
    std::vector<bool> ends(tape.lines.size(), false);
    ends[id] = true;
    ForEachOperand(tape, tape.lines[id], [&](LineId argument) { ends[argument] = true; });
    Walk walk(tape);
    walk.Meet(auxiliary);
    walk.Finish(ends);
    for (LineId line = 0; line < candidates.size(); ++line) {
      if (!candidates[line] || !walk.Met()[line] || ends[line]) continue;
      candidates[line] = false;
      changed = true;
    }
  }
  return changed;
}

}  // namespace

TapeCut CutAt(const Tape& tape, std::vector<bool> candidates)
{
  TakeBackWatched(tape, candidates);
  std::vector<bool> met = Met(tape, candidates);
  while (TakeBackAuxiliaries(tape, met, candidates)) met = Met(tape, candidates);
  TapeCut cut{std::vector<bool>(met.size(), false), std::vector<bool>(met.size(), false)};
  for (LineId id = static_cast<LineId>(tape.rightHandSides.size()); id < met.size(); ++id) {
    cut.held[id] = met[id] && candidates[id];
    cut.leftOut[id] = !met[id] || candidates[id];
  }
  return cut;
}

std::vector<bool> CuttableLines(const Tape& tape)
{
  Walk walk(tape);
  for (const LineId rightHandSide : tape.rightHandSides) walk.Meet(rightHandSide);
  walk.FinishByOperands();
  return walk.Met();
}

std::vector<bool> StillLines(const Tape& tape, const std::vector<bool>& leftOut)
{
  std::vector<bool> still = leftOut;
  // States come first on the tape and are made of later lines: each pass goes one state further.
  for (bool changed = true; changed;) {
    changed = false;
    for (LineId id = 0; id < still.size(); ++id) {
      const Line& line = tape.lines[id];
      if (still[id] || line.kind == LineKind::kTime) continue;
      bool moves = line.kind == LineKind::kState && !still[tape.rightHandSides[line.index]];
      ForEachOperand(tape, line, [&](LineId operand) { moves = moves || !still[operand]; });
      if (moves) continue;
      still[id] = changed = true;
    }
  }
  return still;
}

}  // namespace varno::solve
