#include "arith/term_array.h"

#include <climits>
#include <cstddef>
#include <utility>

#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/support/rational.h"
#include "tests/support/scoped_precision.h"

namespace arith {

using namespace support;
namespace {

TEST(TermArrayTest, HoldsTheTermsUpToTheCount)
{
  const struct {
    int termCount;
    std::size_t size;
  } rows[] = {{0, 1}, {1, 2}, {34, 35}, {-1, 1}, {INT_MIN, 1}};
  for (const auto& row : rows)
    EXPECT_EQ(TermArray(row.termCount).Size(), row.size) << row.termCount;
}

TEST(TermArrayTest, IsEmptyWithoutACount)
{
  EXPECT_TRUE(TermArray().IsEmpty());
  EXPECT_EQ(TermArray().Size(), 0U);
  EXPECT_FALSE(TermArray(0).IsEmpty());
}

TEST(TermArrayTest, IsFullOfZerosAtThePrecisionInForce)
{
  const ScopedPrecision precision(80);
  mpf_set_default_prec(500);
  const TermArray terms(10);
  for (int k = 0; k <= 10; ++k) {
    EXPECT_TRUE(IsExactly(0, terms[k]));
    EXPECT_GE(mpf_get_prec(terms[k]), 500U);
  }
}

TEST(TermArrayTest, NumbersOfFullLengthDoNotTouchOneAnother)
{
  const ScopedPrecision precision(80);
  TermArray terms(5);
  for (int k = 0; k <= 5; ++k) {
    mpf_set_ui(terms[k], 1);
    mpf_div_ui(terms[k], terms[k], 2 * static_cast<unsigned long>(k) + 3);
  }
  for (int k = 0; k <= 5; ++k) {
    Mpf expected(1.0);
    mpf_div_ui(expected, expected, 2 * static_cast<unsigned long>(k) + 3);
    EXPECT_EQ(mpf_cmp(terms[k], expected), 0) << k;
    EXPECT_EQ(mpf_cmp(terms.Data() + k, expected), 0) << k;
  }
}

TEST(TermArrayTest, KeepsItsNumbersWhenItIsMoved)
{
  const ScopedPrecision precision(80);
  TermArray terms(2);
  mpf_set_ui(terms[2], 7);
  TermArray moved = std::move(terms);
  EXPECT_TRUE(IsExactly(7, moved[2]));
}

TEST(TermArrayTest, TellsTheBytesThatItTakes)
{
  // Each number is a struct, its limbs for the precision, one to round with and one that GMP writes
  // on top.
  const ScopedPrecision precision(128);
  const std::size_t number = sizeof(mpf_t) + 4 * sizeof(mp_limb_t);
  EXPECT_EQ(TermArray::BytesFor(0), number);
  EXPECT_EQ(TermArray::BytesFor(-5), number);
  EXPECT_EQ(TermArray::BytesFor(34), 35 * number);
}

}  // namespace
}  // namespace arith
