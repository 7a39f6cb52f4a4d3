#include "solve/tape/below.h"

namespace varno::solve {

std::vector<LineId> Operands(const Tape& tape, LineId id)
{
  const Line& line = tape.lines[id];
  if (line.kind == LineKind::kState) return {tape.rightHandSides[line.index]};
  std::vector<LineId> operands;
  for (const LineId operand : {line.a, line.b, line.c}) {
    if (operand != kNone) operands.push_back(operand);
  }
  for (std::uint32_t i = 0; i < line.factorCount; ++i)
    operands.push_back(tape.factors[line.firstFactor + i].line);
  return operands;
}

std::vector<bool> LinesBelow(const Tape& tape, const std::vector<LineId>& lines)
{
  std::vector<bool> below(tape.lines.size(), false);
  std::vector<LineId> open = lines;
  while (!open.empty()) {
    const LineId id = open.back();
    open.pop_back();
    if (below[id]) continue;
    below[id] = true;
    for (const LineId operand : Operands(tape, id)) open.push_back(operand);
  }
  return below;
}

std::vector<LineId> LinesAtOnce(const Tape& tape, const std::vector<LineId>& lines)
{
  std::vector<bool> found(tape.lines.size(), false);
  std::vector<LineId> open = lines, result;
  while (!open.empty()) {
    const LineId id = open.back();
    open.pop_back();
    if (found[id]) continue;
    found[id] = true;
    if (tape.lines[id].kind == LineKind::kState) continue;
    for (const LineId operand : Operands(tape, id)) open.push_back(operand);
  }
  for (LineId id = 0; id < found.size(); ++id) {
    if (found[id]) result.push_back(id);
  }
  return result;
}

Tape OnlyBelow(const Tape& tape, const std::vector<LineId>& lines)
{
  const std::vector<bool> below = LinesBelow(tape, lines);
  Tape result = tape;
  for (LineId id = 0; id < result.lines.size(); ++id) {
    if (below[id]) continue;
    Line& line = result.lines[id];
    line.kind = LineKind::kConstant;
    line.a = line.b = line.c = line.constant = kNone;
    line.firstFactor = line.factorCount = 0;
    line.degree = 0;
  }
  return result;
}

}  // namespace varno::solve
