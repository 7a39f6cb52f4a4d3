#pragma once

#include <cstddef>
#include <vector>

#include <gmpxx.h>

namespace varno::solve {

inline constexpr int kLimbBits = 64;

/// The terms of one series as integers of at most n limbs, in units of 2^exponent. Each takes as
/// many limbs as it has: high terms, which are small, take few.
struct LongTerms {
  struct Row {
    std::size_t begin = 0;  // of its limbs
    int size = 0;           // how many; 0 for a term that shows no digit
    bool isNegative = false;
    bool isExactZero = true;  // 0, not merely too small to be seen
  };

  std::vector<mp_limb_t> limbs;  // one term behind the other, in the order in which they came
  std::vector<Row> rows;         // by k
  long exponent = 0;
  long leastExponent = 0;       ///< where the exponent begins at least
  int trailingZeros = kNoLimb;  ///< so many limbs at the end of all terms are 0
  bool started = false;
  bool inexact = false;

  static constexpr int kNoLimb = 1 << 30;

  const mp_limb_t* Limbs(const Row& row) const { return limbs.data() + row.begin; }
  void Reset(long newLeastExponent);
  /// Sets term k.
  void Set(int k, const mpz_class& mantissa);
  mpz_class Mantissa(int k) const;
  /// Makes the unit of all terms larger.
  void Raise(long newExponent);
};

/// Divides by 2^bits, to nearest; tells whether anything was lost.
bool ShiftRight(mpz_class& x, long bits);

/// A sum of products of terms with n limbs each, which stands in memory of the caller's: two's
/// complement, in units of 2^UnitBits(n) of the products. Limbs of the factors that do not reach
/// the limb behind the last one of a term are not multiplied.
class LongSum {
 public:
  /// Limbs behind that one: a sum of products that has no bits there is exact whatever its parts
  /// (AddBlockProducts).
  static constexpr int kSpareLimbs = 6;

  LongSum(int n, mp_limb_t* limbs) : n(n), limbs(limbs) {}

  /// Limbs of a sum: two before those of a term.
  static int Size(int n) { return n + 3 + kSpareLimbs; }
  static long UnitBits(int n) { return long{kLimbBits} * (n - 1 - kSpareLimbs); }

  /// Adds a[j] b[i], or twice that; `scratch` has 2 n + 3 limbs.
  void AddProduct(const LongTerms& a, int j, const LongTerms& b, int i, bool twice,
                  mp_limb_t* scratch);
  mpz_class Value() const;

 private:
  int n;
  mp_limb_t* limbs;
};

}  // namespace varno::solve
