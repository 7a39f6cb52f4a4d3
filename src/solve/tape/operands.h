#pragma once

#include <cstdint>

#include "solve/tape/tape.h"

namespace varno::solve {

/// Calls visit(operand) for each line that the value of a line is made of.
template <class Visit>
void ForEachOperand(const Tape& tape, const Line& line, Visit visit)
{
  for (std::uint32_t i = 0; i < line.factorCount; ++i)
    visit(tape.factors[line.firstFactor + i].line);
  if (line.a != kNone) visit(line.a);
  const bool isFunction =
      line.kind == LineKind::kIntegralOfProduct || line.kind == LineKind::kIntegralOfQuotient;
  if (line.b != kNone && !isFunction) visit(line.b);
}

/// The line that the recurrence of a function needs beside its arguments: that of its derivative,
/// or the sum of squares of an angle; kNone for other lines, and where it is the line itself.
inline LineId AuxiliaryOf(const Tape& tape, LineId id)
{
  const Line& line = tape.lines[id];
  switch (line.kind) {
    case LineKind::kIntegralOfProduct:
    case LineKind::kIntegralOfQuotient:
      return line.b == id ? kNone : line.b;
    case LineKind::kAngle:
      return line.c;
    default:
      return kNone;
  }
}

}  // namespace varno::solve
