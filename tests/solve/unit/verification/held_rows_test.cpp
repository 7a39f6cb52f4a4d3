#include "solve/verification/held_rows.h"

#include <cmath>

#include "changed_start.h"
#include "solve/switching/dynamics.h"

namespace varno::solve {
namespace {

using HeldChangedStart = ChangedStart;

TEST_F(HeldChangedStart, GivesTheRowsOfTheBetterAttempt)
{
  HeldRows held(*rows);
  for (const double time : {0.0, 0.5, 1.0}) {
    const auto row = held.Next();
    ASSERT_TRUE(row);
    EXPECT_EQ(row->time.ToDouble(), time);
    EXPECT_NEAR(row->numbers.front().value->ToDouble(), 2 * std::exp(-2 * time), 1e-15);
  }
  EXPECT_FALSE(held.Next());
}

}  // namespace
}  // namespace varno::solve
