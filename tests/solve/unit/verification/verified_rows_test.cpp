#include "solve/verification/verified_rows.h"

#include <cmath>

#include "changed_start.h"

namespace varno::solve {
namespace {

TEST_F(ChangedStart, ContradictsARowThatWasGiven)
{
  rows->Next();
  const auto row = rows->Next();
  ASSERT_TRUE(row);
  EXPECT_NEAR(row->numbers.front().value->ToDouble(), std::exp(-1), 1e-15);
  EXPECT_THROW(rows->Next(), WrongRow);
}

}  // namespace
}  // namespace varno::solve
