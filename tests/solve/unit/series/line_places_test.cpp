#include "solve/series/line_places.h"

#include <algorithm>
#include <cmath>
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

// Whatever a line is made of stands next to it, though the two variables of each cell are declared
// far apart, which draws them together.
TEST(LinePlaces, AreNearThoseOfOperands)
{
  constexpr int kCount = 300;
  Equations m;
  std::vector<Expression> x, v;
  for (int i = 0; i < kCount; ++i) x.push_back(m.Variable("x" + std::to_string(i), 1));
  for (int i = 0; i < kCount; ++i) v.push_back(m.Variable("v" + std::to_string(i), 0));
  for (int i = 0; i < kCount; ++i) {
    const auto at = [&](int j) {
      return x[static_cast<std::size_t>(std::clamp(j, 0, kCount - 1))];
    };
    m.SetDerivative(at(i), v[static_cast<std::size_t>(i)] + 0 * at(i));
    m.SetDerivative(v[static_cast<std::size_t>(i)],
                    at(i - 1) - 2 * at(i) + at(i + 1) - at(i) * at(i) * at(i));
  }
  const Tape tape = Compile(m.Finished());
  const std::vector<double> places = LinePlaces(tape);
  ASSERT_EQ(places.size(), tape.lines.size());
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    for (const LineId operand : Operands(tape, id))
      EXPECT_LT(std::abs(places[id] - places[operand]), 5) << id << " reads " << operand;
  }
  // Cells keep their order.
  for (int i = 1; i < kCount; ++i) EXPECT_LT(places[i - 1], places[i]);
}

}  // namespace
}  // namespace varno::solve
