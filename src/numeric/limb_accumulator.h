#pragma once

#include <cstdlib>
#include <limits>

#include <gmp.h>

namespace varno {

/// A sum of products of GMP floats with a precision of kLimbs limbs, held in registers.
///
/// AddProduct(u, v) gives exactly the value of mpf_mul and mpf_add on numbers of that precision,
/// with their ways of cutting: mpf_mul cuts its factors to kLimbs limbs and its product to one
/// more; mpf_add cuts both operands at kLimbs limbs below the top of the larger one, mpf_sub (which
/// it calls for operands of different signs) one limb lower, unless the operands nearly cancel. The
/// last case is left to GMP: AddProduct then returns false and changes nothing.
///
/// Limbs are counted from the least significant one. The sum is sign * 0.L L L ... * B^exponent
/// with kLimbs + 1 limbs L to the base B = 2^64, the top one not 0; sign is 0 for the sum 0.
template <int kLimbs>
class LimbAccumulator {
 public:
  /// Adds u v, unless it is a case for GMP.
  bool AddProduct(mpf_srcptr u, mpf_srcptr v)
  {
    if (u->_mp_size == 0 || v->_mp_size == 0) return true;
    const bool negative = (u->_mp_size ^ v->_mp_size) < 0;
    const Number product = Product(u, v);
    if (isZero) {
      isZero = false;
      isNegative = negative;
      sum = product;
      return true;
    }
    const bool sumIsLarger = IsLarger(sum, product);
    const Number& large = sumIsLarger ? sum : product;
    const Number& small = sumIsLarger ? product : sum;
    if (isNegative == negative) {
      sum = Sum(large, small);
      return true;
    }
    if (NearlyCancel(large, small)) return false;
    sum = Difference(large, small);
    if (!sumIsLarger) isNegative = negative;
    return true;
  }

  void Load(mpf_srcptr x)
  {
    isZero = x->_mp_size == 0;
    isNegative = x->_mp_size < 0;
    sum.exponent = x->_mp_exp;
    const int size = std::abs(x->_mp_size);
    for (int i = 0; i < kSize; ++i) sum.limbs[i] = UpperLimb(x, size, i + size - kSize);
  }

  void Store(mpf_ptr x) const
  {
    if (isZero) {
      x->_mp_size = 0;
      x->_mp_exp = 0;
      return;
    }
    x->_mp_size = isNegative ? -kSize : kSize;
    x->_mp_exp = sum.exponent;
    for (int i = 0; i < kSize; ++i) x->_mp_d[i] = sum.limbs[i];
  }

 private:
  static_assert(GMP_NUMB_BITS == 64);
  static constexpr int kSize = kLimbs + 1;
  static constexpr mp_limb_t kMaximum = std::numeric_limits<mp_limb_t>::max();

  __extension__ using Wide = unsigned __int128;

  struct Number {
    mp_limb_t limbs[kSize];
    mp_exp_t exponent;

    mp_limb_t Top() const { return limbs[kLimbs]; }
  };

  /// Limb i of x; 0 below its lowest one.
  static mp_limb_t UpperLimb(mpf_srcptr x, int size, int i)
  {
    return i >= 0 && i < size ? x->_mp_d[i] : 0;
  }

  static Number Product(mpf_srcptr u, mpf_srcptr v)
  {
    const int uSize = std::abs(u->_mp_size);
    const int vSize = std::abs(v->_mp_size);
    mp_limb_t a[kLimbs];
    mp_limb_t b[kLimbs];
    mp_limb_t p[2 * kLimbs];
    if (uSize >= kLimbs && vSize >= kLimbs) [[likely]] {
#pragma GCC unroll 4
      for (int i = 0; i < kLimbs; ++i) {
        a[i] = u->_mp_d[uSize - kLimbs + i];
        b[i] = v->_mp_d[vSize - kLimbs + i];
      }
    } else {
      for (int i = 0; i < kLimbs; ++i) {
        a[i] = UpperLimb(u, uSize, uSize - kLimbs + i);
        b[i] = UpperLimb(v, vSize, vSize - kLimbs + i);
      }
    }
#pragma GCC unroll 8
    for (int i = 0; i < 2 * kLimbs; ++i) p[i] = 0;
#pragma GCC unroll 4
    for (int i = 0; i < kLimbs; ++i) {
      mp_limb_t carry = 0;
#pragma GCC unroll 4
      for (int j = 0; j < kLimbs; ++j) {
        const Wide w = Wide{a[i]} * b[j] + p[i + j] + carry;
        p[i + j] = static_cast<mp_limb_t>(w);
        carry = static_cast<mp_limb_t>(w >> 64);
      }
      p[i + kLimbs] = carry;
    }
    // The kSize limbs below the top one that is not 0.
    const bool emptyTop = p[2 * kLimbs - 1] == 0;
    Number product;
    product.exponent = u->_mp_exp + v->_mp_exp - (emptyTop ? 1 : 0);
#pragma GCC unroll 4
    for (int i = 0; i < kSize; ++i) {
      product.limbs[i] = emptyTop ? p[kLimbs - 2 + i] : p[kLimbs - 1 + i];
    }
    return product;
  }

  static bool IsLarger(const Number& a, const Number& b)
  {
    return a.exponent != b.exponent ? a.exponent > b.exponent : a.Top() > b.Top();
  }

  /// Limb i of x moved down by whole limbs.
  static mp_limb_t Shifted(const Number& x, mp_exp_t shift, int i)
  {
    return i + shift < kSize ? x.limbs[i + shift] : 0;
  }

  /// Both without their lowest limb.
  static Number Sum(const Number& large, const Number& small)
  {
    const mp_exp_t shift = large.exponent - small.exponent;
    mp_limb_t s[kSize];
    s[0] = 0;
    mp_limb_t carry = 0;
#pragma GCC unroll 4
    for (int i = 1; i < kSize; ++i) {
      const Wide w = Wide{large.limbs[i]} + Shifted(small, shift, i) + carry;
      s[i] = static_cast<mp_limb_t>(w);
      carry = static_cast<mp_limb_t>(w >> 64);
    }
    Number sum;
    sum.exponent = large.exponent + static_cast<mp_exp_t>(carry);
#pragma GCC unroll 4
    for (int i = 0; i < kLimbs; ++i) sum.limbs[i] = carry != 0 ? s[i + 1] : s[i];
    sum.limbs[kLimbs] = carry != 0 ? 1 : s[kLimbs];
    return sum;
  }

  /// large - small, which is not 0
  static Number Difference(const Number& large, const Number& small)
  {
    const mp_exp_t shift = large.exponent - small.exponent;
    Number difference;
    difference.exponent = large.exponent;
    mp_limb_t borrow = 0;
#pragma GCC unroll 4
    for (int i = 0; i < kSize; ++i) {
      const Wide w = Wide{large.limbs[i]} - Shifted(small, shift, i) - borrow;
      difference.limbs[i] = static_cast<mp_limb_t>(w);
      borrow = static_cast<mp_limb_t>(w >> 64) & 1;
    }
    while (difference.Top() == 0) [[unlikely]]
      {
        for (int i = kLimbs; i > 0; --i) difference.limbs[i] = difference.limbs[i - 1];
        difference.limbs[0] = 0;
        --difference.exponent;
      }
    return difference;
  }

  /// Where mpf_sub looks for leading limbs that cancel before it cuts.
  static bool NearlyCancel(const Number& large, const Number& small)
  {
    const mp_exp_t shift = large.exponent - small.exponent;
    if (shift == 0) return large.Top() == small.Top();
    return shift == 1 && large.Top() == 1 && small.Top() == kMaximum &&
           large.limbs[kLimbs - 1] == 0;
  }

  Number sum;
  bool isZero = true;
  bool isNegative = false;
};

}  // namespace varno
