#include "solve/integration/series_pool.h"

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

TEST(SeriesPool, GivesOutAgainWhatNobodyHolds)
{
  const Tape tape = Compile(support::Quadrature([](support::Equations& m) { return m.Time(); }));
  int made = 0;
  auto pool = std::make_shared<SeriesPool>([&] {
    ++made;
    return MakeSeries(tape, 64, 6);
  });
  std::shared_ptr<Series> first = pool->Take();
  const std::shared_ptr<Series> second = pool->Take();
  EXPECT_EQ(made, 2);
  EXPECT_NE(first, second);
  first.reset();
  first = pool->Take();
  EXPECT_EQ(made, 2);
  EXPECT_NE(first, second);
  pool.reset();  // the series still have it to go back to
}

}  // namespace
}  // namespace varno::solve
