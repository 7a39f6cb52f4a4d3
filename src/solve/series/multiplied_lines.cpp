#include "solve/series/multiplied_lines.h"

namespace varno::solve {

MultipliedLines LinesMultiplied(const Tape& tape)
{
  const std::vector<bool> none(tape.lines.size(), false);
  MultipliedLines found{none, none};
  auto& [inProducts, elsewhere] = found;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const Line& line = tape.lines[id];
    switch (line.kind) {
      case LineKind::kProduct:
        inProducts[line.a] = inProducts[line.b] = true;
        break;
      case LineKind::kSquare:
        inProducts[line.a] = true;
        break;
      case LineKind::kQuotient:
        elsewhere[line.b] = elsewhere[id] = true;
        break;
      case LineKind::kSquareRoot:
        elsewhere[id] = true;
        break;
      case LineKind::kPower:
        elsewhere[line.a] = elsewhere[id] = true;
        break;
      case LineKind::kIntegralOfProduct:
      case LineKind::kIntegralOfQuotient:
        elsewhere[line.b] = true;
        break;
      case LineKind::kAngle:
        elsewhere[line.a] = elsewhere[line.b] = elsewhere[line.c] = true;
        break;
      default:
        break;
    }
  }
  return found;
}

}  // namespace varno::solve
