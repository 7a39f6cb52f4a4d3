// Sums of products of terms, made of blocks, against exact integers.

#include "solve/fixed/relaxed_product.h"

#include <algorithm>
#include <vector>

#include <gmpxx.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr long kTermBits = 62;  // of the first limb

enum Kind { kLargest, kLeast, kAtRandom, kOdd };

/// A series of `count` terms with n limbs, that fall by `fall` bits from one to the next.
struct Row {
  LongTerms terms;
  std::vector<mpz_class> exact;
  int known = 0;

  Row(int count, int n, double fall, Kind kind, gmp_randclass& random)
  {
    terms.rows.resize(count);
    terms.started = true;
    for (int k = 0; k < count; ++k) {
      const long bits = long{kLimbBits} * (n - 1) + kTermBits - static_cast<long>(fall * k);
      mpz_class term = 0;
      if (bits > 0) {
        const mpz_class most = (mpz_class(1) << static_cast<mp_bitcnt_t>(bits)) - 1;
        term = random.get_z_range(2 * most + 1) - most;
        if (kind == kLargest) term = most;
        if (kind == kLeast) term = -most;
      }
      if (kind == kOdd && k % 2 == 0) term = 0;
      exact.push_back(term);
    }
  }

  void Reserve(int count)
  {
    if (static_cast<int>(terms.rows.size()) < count) terms.rows.resize(count);
  }

  void AddUpTo(int k)
  {
    for (; known <= k; ++known) terms.Set(known, exact[known]);
  }
};

mpz_class TimesPower(const mpz_class& x, long exponent)
{
  return exponent < 0 ? x : mpz_class(x << static_cast<mp_bitcnt_t>(exponent));
}

/// The largest error of a sum, in whole units of the limb behind the last one of a term.
mpz_class LargestError(int n, Row& a, Row& b, TermRange range, int count)
{
  RelaxedProduct product;
  product.Reset();
  mpz_class worst = 0;
  for (int k = range.aFirst + range.bFirst; k < count; ++k) {
    // Terms that do not stand in the sum are not there.
    a.Reserve(k + 1);
    b.Reserve(k + 1);
    a.AddUpTo(k - range.bFirst);
    b.AddUpTo(k - range.aFirst);
    mpz_class expected = 0;
    for (int j = range.aFirst; j <= k - range.bFirst; ++j) expected += a.exact[j] * b.exact[k - j];
    const mpz_class sum = product.Sum(n, a.terms, b.terms, range, k, {}).Value();
    const long unit = LongSum::UnitBits(n);
    const mpz_class error = abs(TimesPower(sum, unit) - TimesPower(expected, -unit));
    if (error > worst) worst = error;
  }
  const long limb = long{kLimbBits} * (n - 1) - std::min(0L, LongSum::UnitBits(n));
  return worst >> static_cast<mp_bitcnt_t>(limb);
}

constexpr int kCount = 140;  // beyond the block of 128 terms

TEST(RelaxedProduct, IsRightForExtremeTerms)
{
  gmp_randclass random(gmp_randinit_default);
  for (const int n : {1, 2, 9}) {
    for (const Kind kind : {kLargest, kLeast, kAtRandom, kOdd}) {
      for (const double fall : {0.0, 2.9, 40.0}) {
        Row a(kCount, n, fall, kind, random), b(kCount, n, fall / 2, kLargest, random);
        EXPECT_LE(LargestError(n, a, b, {0, 0}, kCount), 3 * kCount)
            << n << " limbs, kind " << kind << ", fall " << fall;
      }
    }
  }
}

// Sums with no bits behind the last one of a term, whatever digits they are made of
TEST(RelaxedProduct, IsExactForTermsOfFewBits)
{
  gmp_randclass random(gmp_randinit_default);
  constexpr int n = 9;
  Row a(kCount, 1, 0, kAtRandom, random), b(kCount, 1, 0, kAtRandom, random);
  for (Row* row : {&a, &b}) {
    for (mpz_class& term : row->exact) term <<= mp_bitcnt_t{4} * kLimbBits;
  }
  RelaxedProduct product;
  product.Reset();
  for (int k = 0; k < kCount; ++k) {
    a.AddUpTo(k);
    b.AddUpTo(k);
    mpz_class expected = 0;
    for (int j = 0; j <= k; ++j) expected += a.exact[j] * b.exact[k - j];
    const mpz_class sum = product.Sum(n, a.terms, b.terms, {0, 0}, k, {}).Value();
    EXPECT_EQ(expected, TimesPower(sum, LongSum::UnitBits(n))) << "term " << k;
  }
}

// As in a quotient, and in an integral of one
TEST(RelaxedProduct, LeavesOutFirstTerms)
{
  gmp_randclass random(gmp_randinit_default);
  for (const TermRange range : {TermRange{1, 0}, TermRange{0, 1}, TermRange{1, 1}}) {
    Row a(kCount, 3, 1.4, kAtRandom, random), b(kCount, 3, 1.4, kAtRandom, random);
    EXPECT_LE(LargestError(3, a, b, range, kCount), 3 * kCount);
  }
}

TEST(RelaxedProduct, SquaresByHalves)
{
  gmp_randclass random(gmp_randinit_default);
  for (const TermRange range : {TermRange{0, 0}, TermRange{1, 1}}) {
    for (const Kind kind : {kLargest, kAtRandom}) {
      Row a(kCount, 3, 1.4, kind, random);
      EXPECT_LE(LargestError(3, a, a, range, kCount), 3 * kCount);
    }
  }
}

// What earlier blocks bring to sums for which there was no room
TEST(RelaxedProduct, GrowsWithItsSeries)
{
  gmp_randclass random(gmp_randinit_default);
  for (const int first : {1, 33, 70, 128}) {
    Row a(kCount, 3, 1.4, kAtRandom, random), b(kCount, 3, 1.4, kAtRandom, random);
    a.terms.rows.resize(first);
    b.terms.rows.resize(first);
    EXPECT_LE(LargestError(3, a, b, {0, 0}, kCount), 3 * kCount) << first;
  }
}

// Sums that were begun are in the unit of the terms before
TEST(RelaxedProduct, FollowsAChangeOfUnits)
{
  gmp_randclass random(gmp_randinit_default);
  for (const long shift : {1L, 64L, 75L, 1000L}) {
    Row a(kCount, 3, 1.4, kAtRandom, random), b(kCount, 3, 1.4, kAtRandom, random);
    RelaxedProduct product;
    product.Reset();
    for (int k = 0; k < kCount; ++k) {
      a.AddUpTo(k);
      b.AddUpTo(k);
      if (k == 100) {
        a.terms.Raise(shift);
        for (int j = k + 1; j < kCount; ++j) ShiftRight(a.exact[j], shift);
      }
      const mpz_class sum = product.Sum(3, a.terms, b.terms, {0, 0}, k, {}).Value();
      mpz_class expected = 0;
      for (int j = 0; j <= k; ++j) expected += a.terms.Mantissa(j) * b.exact[k - j];
      const mpz_class error = abs(sum - TimesPower(expected, -LongSum::UnitBits(3)));
      // Half a unit of a term that was rounded anew, times a term of two limbs and a half
      const long bits = long{kLimbBits} * 3 - LongSum::UnitBits(3) + 8;
      EXPECT_LE(mpz_sizeinbase(error.get_mpz_t(), 2), static_cast<std::size_t>(bits))
          << "term " << k << ", shift " << shift;
    }
  }
}

}  // namespace
}  // namespace varno::solve
