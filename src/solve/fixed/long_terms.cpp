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

void LongSum::Clear()
{
  std::ranges::fill(limbs, 0);
}

void LongSum::Double()
{
  mpn_lshift(limbs.data(), limbs.data(), Size(n), 1);
}

void LongSum::AddProduct(const LongTerms& a, int j, const LongTerms& b, int i)
{
  const LongTerms::Row &x = a.rows[j], &y = b.rows[i];
  const int unit = n - 1;
  // A limb of x below this one, times the whole of y, stays below the unit.
  const int xDrop = std::max(0, unit - y.size), yDrop = std::max(0, unit - x.size);
  const int xSize = x.size - xDrop, ySize = y.size - yDrop;
  if (xSize <= 0 || ySize <= 0) return;
  const mp_limb_t *const xLimbs = a.Limbs(x) + xDrop, *const yLimbs = b.Limbs(y) + yDrop;
  if (xSize >= ySize) {
    mpn_mul(product.data(), xLimbs, xSize, yLimbs, ySize);
  } else {
    mpn_mul(product.data(), yLimbs, ySize, xLimbs, xSize);
  }
  const int drop = unit - xDrop - yDrop, count = xSize + ySize - drop;
  if (count <= 0) return;
  if (x.isNegative == y.isNegative) {
    mpn_add(limbs.data(), limbs.data(), Size(n), product.data() + drop, count);
  } else {
    mpn_sub(limbs.data(), limbs.data(), Size(n), product.data() + drop, count);
  }
}

mpz_class LongSum::Value() const
{
  mpz_class value;
  mp_limb_t* const to = mpz_limbs_write(value.get_mpz_t(), Size(n));
  const bool isNegative = limbs.back() >> (kLimbBits - 1) != 0;
  if (isNegative) {
    mpn_neg(to, limbs.data(), Size(n));
  } else {
    mpn_copyi(to, limbs.data(), Size(n));
  }
  mpz_limbs_finish(value.get_mpz_t(), isNegative ? -Size(n) : Size(n));
  return value;
}

}  // namespace varno::solve
