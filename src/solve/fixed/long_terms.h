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

/// Sums of products of terms with n limbs: two's complement, in units of 2^(64 (n - 1)) of the
/// products. Limbs of the factors that do not reach a unit are not multiplied.
class LongSum {
 public:
  explicit LongSum(int n) : n(n), limbs(Size(n)), product(2 * static_cast<std::size_t>(n) + 2) {}

  /// Limbs of a sum: one behind those of a term, and two before them.
  static int Size(int n) { return n + 3; }

  void Clear();
  void Double();
  /// Adds a[j] b[i].
  void AddProduct(const LongTerms& a, int j, const LongTerms& b, int i);
  mpz_class Value() const;

 private:
  int n;
  std::vector<mp_limb_t> limbs;
  std::vector<mp_limb_t> product;  // scratch
};

}  // namespace varno::solve
