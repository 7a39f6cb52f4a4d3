#include "arith/scratch.h"

#include <gtest/gtest.h>

#include "tests/support/scoped_precision.h"

namespace arith {
namespace {

TEST(Scratch, IsOneNumber)
{
  EXPECT_EQ(&Scratch(), &Scratch());
}

TEST(Scratch, FollowsThePrecisionInForce)
{
  for (const mp_bitcnt_t bits : {64U, 640U, 128U}) {
    const support::ScopedPrecision precision(bits);
    EXPECT_EQ(mpf_get_prec(Scratch()), mpf_get_default_prec());
  }
}

}  // namespace
}  // namespace arith
