#include "solve/series/weighted_lines.h"

namespace varno::solve {

std::vector<bool> LinesNeedingWeights(const Tape& tape)
{
  std::vector<bool> needed(tape.lines.size(), false);
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const Line& line = tape.lines[id];
    switch (line.kind) {
      case LineKind::kPower:
      case LineKind::kIntegralOfProduct:
        needed[line.a] = true;
        break;
      case LineKind::kIntegralOfQuotient:
        needed[id] = true;
        break;
      case LineKind::kAngle:
        needed[id] = needed[line.a] = needed[line.b] = true;
        break;
      default:
        break;
    }
  }
  return needed;
}

}  // namespace varno::solve
