#include "solve/series/line_places.h"

#include <cstddef>
#include <numeric>

#include "solve/tape/below.h"

namespace varno::solve {

std::vector<double> LinePlaces(const Tape& tape)
{
  constexpr int kPasses = 12;
  std::vector<double> places(tape.lines.size(), 0);
  std::iota(places.begin(),
            places.begin() + static_cast<std::ptrdiff_t>(tape.rightHandSides.size()), 0.0);
  for (int pass = 0; pass < kPasses; ++pass) {
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      const bool isState = tape.lines[id].kind == LineKind::kState;
      if (isState && pass == 0) continue;
      const std::vector<LineId> operands = Operands(tape, id);
      double sum = isState ? places[id] : 0;
      for (const LineId operand : operands) sum += places[operand];
      const std::size_t count = operands.size() + (isState ? 1 : 0);
      if (count > 0) places[id] = sum / static_cast<double>(count);
    }
  }
  return places;
}

}  // namespace varno::solve
