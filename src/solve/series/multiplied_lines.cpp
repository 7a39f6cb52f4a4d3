#include "solve/series/multiplied_lines.h"

namespace varno::solve {

std::vector<bool> LinesMultiplied(const Tape& tape)
{
  std::vector<bool> multiplied(tape.lines.size(), false);
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const Line& line = tape.lines[id];
    switch (line.kind) {
      case LineKind::kProduct:
        multiplied[line.a] = multiplied[line.b] = true;
        break;
      case LineKind::kSquare:
        multiplied[line.a] = true;
        break;
      case LineKind::kQuotient:
        multiplied[line.b] = multiplied[id] = true;
        break;
      case LineKind::kSquareRoot:
        multiplied[id] = true;
        break;
      case LineKind::kPower:
        multiplied[line.a] = multiplied[id] = true;
        break;
      case LineKind::kIntegralOfProduct:
      case LineKind::kIntegralOfQuotient:
        multiplied[line.b] = true;
        break;
      case LineKind::kAngle:
        multiplied[line.a] = multiplied[line.b] = multiplied[line.c] = true;
        break;
      default:
        break;
    }
  }
  return multiplied;
}

}  // namespace varno::solve
