#include "numeric/term_storage.h"

#include <climits>
#include <cstddef>

#include <gtest/gtest.h>

#include "support/exact_text.h"
#include "support/rational.h"
#include "support/scoped_global.h"
#include "sys/memory.h"

namespace varno {
namespace {

TEST(TermStorageTest, HoldsTheTermsUpToTheCount)
{
  const struct {
    int termCount;
    std::size_t size;
  } rows[] = {{0, 1}, {1, 2}, {34, 35}, {-1, 1}, {INT_MIN, 1}};
  for (const auto& row : rows)
    EXPECT_EQ(TermStorage(row.termCount).size(), row.size) << row.termCount;
}

TEST(TermStorageTest, IsFullOfZerosAtThePrecisionInForce)
{
  const ScopedGlobal global;
  mpf_set_default_prec(500);
  for (const Mpf& term : TermStorage(10)) {
    EXPECT_TRUE(IsExactly(0, term));
    EXPECT_GE(mpf_get_prec(term), 500U);
  }
}

TEST(TermStorageTest, ACountBeyondAllMemoryEndsTheRun)
{
  // 2^31 numbers of 2^30 bits are more than any machine has.
  const auto allocate = [] {
    InstallMemoryLimits();
    mpf_set_default_prec(mp_bitcnt_t{1} << 30);
    TermStorage(INT_MAX);
  };
  EXPECT_EXIT(allocate(), testing::ExitedWithCode(1), ExactText("#(ERR) Out of memory\n"));
}

}  // namespace
}  // namespace varno
