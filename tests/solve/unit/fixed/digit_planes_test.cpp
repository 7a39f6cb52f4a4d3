// Digits of terms by place, and sums of them, against the digits themselves.

#include "solve/fixed/digit_planes.h"

#include <bit>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr int kDigits = 3;
constexpr int kTerms = DigitPlanes::kTerms;

/// A digit of its own for each term and place, of either sign
double DigitOf(int k, int i)
{
  return (k % 2 == 0 ? 0x1p50 : -0x1p50) + (k % 2 == 0 ? -1 : 1) * (100 * k + i);
}

/// Two eighths, from rows that are a digit apart
DigitPlanes Filled(const std::vector<int>& leading)
{
  DigitPlanes planes;
  planes.Reserve(kDigits, 2 * kTerms);
  constexpr int kStride = kDigits + 1;
  std::vector<double> rows(2 * kTerms * kStride, -1);
  for (int k = 0; k < 2 * kTerms; ++k) {
    for (int i = 0; i < kDigits; ++i) rows[k * kStride + i] = DigitOf(k, i);
  }
  for (int eighth = 0; eighth < 2; ++eighth)
    planes.Set(eighth, &rows[eighth * kTerms * kStride], kStride, &leading[eighth * kTerms]);
  return planes;
}

TEST(DigitPlanes, HoldNaturalNumbersByPlace)
{
  const DigitPlanes planes = Filled(std::vector<int>(2 * kTerms));
  for (int i = 0; i < kDigits; ++i) {
    for (int k = 0; k < 2 * kTerms; ++k)
      EXPECT_EQ(DigitTiles::kBias + DigitOf(k, i), planes.Plane(i)[k])
          << "digit " << i << " of " << k;
  }
  for (int k = 0; k < 2 * kTerms; ++k)
    EXPECT_EQ(DigitTiles::kBias, planes.Plane(kDigits)[k]) << "behind the last digits";
  EXPECT_EQ(planes.Plane(0) + planes.Stride(), planes.Plane(1));
}

TEST(DigitPlanes, SumDigitsOverTerms)
{
  const DigitPlanes planes = Filled(std::vector<int>(2 * kTerms));
  for (int i = 0; i <= kDigits; ++i) {
    std::uint64_t expected = 0;
    for (int k = 0; k <= 2 * kTerms; ++k) {
      if (k % kTerms == 0) {
        EXPECT_EQ(expected, planes.SumBefore(k / kTerms, i)) << "digit " << i << " before " << k;
      }
      if (k < 2 * kTerms) expected += std::bit_cast<std::uint64_t>(planes.Plane(i)[k]);
    }
  }
}

TEST(DigitPlanes, KnowTheZerosThatEightTermsBeginWith)
{
  const DigitPlanes planes = Filled({3, 2, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 1, 3, 3, 2});
  EXPECT_EQ(2, planes.LeastLeading(0));
  EXPECT_EQ(1, planes.LeastLeading(1));
}

}  // namespace
}  // namespace varno::solve
