#include "solve/series/term_store.h"

#include <utility>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(TermStore, BeginsWithZeros)
{
  const TermStore store(2, 3, 123);
  for (int row = 0; row < 2; ++row) {
    for (int k = 0; k < 3; ++k) EXPECT_NE(mpfr_zero_p(store.Row(row) + k), 0);
  }
}

TEST(TermStore, KeepsTermsAndPrecisionWhenItGrows)
{
  TermStore store(2, 2, 123);
  // 1 + 2^-122 takes all 123 bits.
  mpfr_set_ui_2exp(store.Row(1) + 1, 1, -122, MPFR_RNDN);
  mpfr_add_ui(store.Row(1) + 1, store.Row(1) + 1, 1, MPFR_RNDN);
  store.Grow(7);
  EXPECT_EQ(7, store.TermCount());
  EXPECT_EQ(123, mpfr_get_prec(store.Row(1) + 6));
  EXPECT_NE(mpfr_zero_p(store.Row(1) + 6), 0);
  mpfr_sub_ui(store.Row(1) + 1, store.Row(1) + 1, 1, MPFR_RNDN);
  EXPECT_EQ(0, mpfr_cmp_ui_2exp(store.Row(1) + 1, 1, -122));
}

TEST(TermStore, NeverShrinks)
{
  TermStore store(1, 5, 64);
  store.Grow(3);
  EXPECT_EQ(5, store.TermCount());
}

// An order that rises one by one must not copy all terms each time.
TEST(TermStore, GrowsByAHalfAtLeast)
{
  TermStore store(1, 100, 64);
  store.Grow(101);
  EXPECT_EQ(150, store.TermCount());
}

TEST(TermStore, MayBeEmpty)
{
  TermStore store(0, 3, 64);
  store.Grow(9);
  EXPECT_EQ(9, store.TermCount());
}

}  // namespace
}  // namespace varno::solve
