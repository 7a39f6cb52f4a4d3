#include "solve/fixed/long_terms.h"

#include <algorithm>

namespace varno::solve {

void LongTerms::Reset(long newLeastExponent)
{
  limbs.clear();
  std::ranges::fill(rows, Row());
  leastExponent = newLeastExponent;
  trailingZeros = kNoLimb;
  started = inexact = false;
}

void LongTerms::Set(int k, const mpz_class& mantissa)
{
  mpz_srcptr x = mantissa.get_mpz_t();
  const int size = static_cast<int>(mpz_size(x));
  rows[k].begin = limbs.size();
  rows[k].size = size;
  rows[k].isNegative = mpz_sgn(x) < 0;
  if (size == 0) return;
  const mp_limb_t* const begin = mpz_limbs_read(x);
  limbs.insert(limbs.end(), begin, begin + size);
  int zeros = 0;
  while (begin[zeros] == 0) ++zeros;
  trailingZeros = std::min(trailingZeros, zeros);
}

mpz_class LongTerms::Mantissa(int k) const
{
  const Row& row = rows[k];
  mpz_t view;
  return mpz_class(mpz_roinit_n(view, Limbs(row), row.isNegative ? -row.size : row.size));
}

void LongTerms::Raise(long newExponent)
{
  std::vector<mpz_class> mantissas;
  for (int k = 0; k < static_cast<int>(rows.size()); ++k) {
    mantissas.push_back(Mantissa(k));
    inexact |= ShiftRight(mantissas.back(), newExponent - exponent);
  }
  limbs.clear();
  trailingZeros = kNoLimb;
  for (int k = 0; k < static_cast<int>(rows.size()); ++k) Set(k, mantissas[k]);
  exponent = newExponent;
}

bool ShiftRight(mpz_class& x, long bits)
{
  mpz_ptr z = x.get_mpz_t();
  if (bits <= 0 || mpz_sgn(z) == 0) return false;
  const auto count = static_cast<mp_bitcnt_t>(bits);
  const bool lost = mpz_divisible_2exp_p(z, count) == 0;
  const bool isUp = mpz_tstbit(z, count - 1) != 0;
  mpz_fdiv_q_2exp(z, z, count);
  if (isUp) mpz_add_ui(z, z, 1);
  return lost;
}

void LongSum::AddProduct(const LongTerms& a, int j, const LongTerms& b, int i, bool twice,
                         mp_limb_t* scratch)
{
  const LongTerms::Row &x = a.rows[j], &y = b.rows[i];
  // A limb of x below this one, times the whole of y, stays below the limb behind the last one.
  const int xDrop = std::max(0, n - 1 - y.size), yDrop = std::max(0, n - 1 - x.size);
  const int xSize = x.size - xDrop, ySize = y.size - yDrop;
  if (xSize <= 0 || ySize <= 0) return;
  const mp_limb_t *const xLimbs = a.Limbs(x) + xDrop, *const yLimbs = b.Limbs(y) + yDrop;
  if (xSize >= ySize) {
    mpn_mul(scratch, xLimbs, xSize, yLimbs, ySize);
  } else {
    mpn_mul(scratch, yLimbs, ySize, xLimbs, xSize);
  }
  int size = xSize + ySize;
  if (twice) {
    scratch[size] = mpn_lshift(scratch, scratch, size, 1);
    ++size;
  }
  const int place = xDrop + yDrop - (n - 1 - kSpareLimbs), drop = std::max(0, -place);
  const int count = size - drop, begin = std::max(0, place);
  if (count <= 0) return;
  mp_limb_t* const to = limbs + begin;
  if (x.isNegative == y.isNegative) {
    mpn_add(to, to, Size(n) - begin, scratch + drop, count);
  } else {
    mpn_sub(to, to, Size(n) - begin, scratch + drop, count);
  }
}

mpz_class LongSum::Value() const
{
  mpz_class value;
  const int size = Size(n);
  mp_limb_t* const to = mpz_limbs_write(value.get_mpz_t(), size);
  const bool isNegative = limbs[size - 1] >> (kLimbBits - 1) != 0;
  if (isNegative) {
    mpn_neg(to, limbs, size);
  } else {
    mpn_copyi(to, limbs, size);
  }
  mpz_limbs_finish(value.get_mpz_t(), isNegative ? -size : size);
  return value;
}

}  // namespace varno::solve
