#pragma once

#include <cstdlib>
#include <limits>

#include <gmp.h>

namespace arith {

/// A sum of products of GMP floats with a precision of kLimbs limbs, as far as possible held in
/// registers.
///
/// AddProduct(u, v) gives exactly the value of mpf_mul and mpf_add on numbers of that precision,
/// with their ways of cutting: mpf_mul cuts its factors to kLimbs limbs and its product to one
/// more; mpf_add cuts both operands at kLimbs limbs below the top of the larger one, mpf_sub (which
/// it calls for operands of different signs) one limb lower, unless the operands nearly cancel. The
/// last case is left to GMP: AddProduct then returns false and changes nothing.
///
/// Limbs are counted from the least significant one. A number is 0.L L L ... * B^exponent with
/// kLimbs + 1 limbs L to the base B = 2^64, the top one not 0; signs are kept apart, and so is the
/// sum 0.
template <int kLimbs>
class LimbAccumulator {
 public:
  /// Adds u v, unless it is a case for GMP.
  bool AddProduct(mpf_srcptr u, mpf_srcptr v)
  {
    if (u->_mp_size == 0 || v->_mp_size == 0) return true;
    const bool negative = (u->_mp_size ^ v->_mp_size) < 0;
    const Number product = Product(u, v);
    if (isZero) [[unlikely]] {
      isZero = false;
      isNegative = negative;
      sum = product;
      return true;
    }
    if (product.exponent != sum.exponent) [[unlikely]]
      return AddMoved(product, negative);
    if (sum.Top() == product.Top() && isNegative != negative) [[unlikely]]
      return false;
    Add(sum, isNegative, product, negative);
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
  /// Up to here a product written out is faster than a call of mpn_mul_n.
  static constexpr int kMostLimbsInRegisters = 4;
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

  /// The highest kLimbs limbs of x, with zeros below the lowest one.
  static void CopyUpperLimbs(mp_limb_t* limbs, mpf_srcptr x)
  {
    const int size = std::abs(x->_mp_size);
    if (size >= kLimbs) [[likely]] {
#pragma GCC unroll 8
      for (int i = 0; i < kLimbs; ++i) limbs[i] = x->_mp_d[size - kLimbs + i];
    } else {
      for (int i = 0; i < kLimbs; ++i) limbs[i] = UpperLimb(x, size, size - kLimbs + i);
    }
  }

  static Number Product(mpf_srcptr u, mpf_srcptr v)
  {
    mp_limb_t a[kLimbs];
    mp_limb_t b[kLimbs];
    mp_limb_t p[2 * kLimbs];
    CopyUpperLimbs(a, u);
    CopyUpperLimbs(b, v);
    if constexpr (kLimbs <= kMostLimbsInRegisters) {
      MultiplyInRegisters(p, a, b);
    } else {
      mpn_mul_n(p, a, b, kLimbs);
    }
    // The kSize limbs below the top one that is not 0.
    const bool emptyTop = p[2 * kLimbs - 1] == 0;
    const mp_limb_t mask = emptyTop ? kMaximum : 0;
    Number product;
    product.exponent = u->_mp_exp + v->_mp_exp - (emptyTop ? 1 : 0);
#pragma GCC unroll 8
    for (int i = 0; i < kSize; ++i) {
      const mp_limb_t upper = p[kLimbs - 1 + i];
      const mp_limb_t lower = p[kLimbs - 2 + i];
      product.limbs[i] = upper ^ ((upper ^ lower) & mask);
    }
    return product;
  }

  /// p = a b, limb by limb of the product.
  static void MultiplyInRegisters(mp_limb_t* p, const mp_limb_t* a, const mp_limb_t* b)
  {
    mp_limb_t low = 0, middle = 0, high = 0;  // what is summed for limb k and the two above it
#pragma GCC unroll 8
    for (int k = 0; k < 2 * kLimbs - 1; ++k) {
#pragma GCC unroll 8
      for (int i = 0; i < kLimbs; ++i) {
        if (i > k || k - i >= kLimbs) continue;
        const Wide w = Wide{a[i]} * b[k - i];
        mp_limb_t carry = static_cast<mp_limb_t>(w >> 64);
        carry += __builtin_add_overflow(low, static_cast<mp_limb_t>(w), &low);
        high += __builtin_add_overflow(middle, carry, &middle);
      }
      p[k] = low;
      low = middle;
      middle = high;
      high = 0;
    }
    p[2 * kLimbs - 1] = low;
  }

  /// Sets the sum to a + b for two numbers of the same exponent, which do not nearly cancel. The
  /// way through is the same for sums and differences: which it is follows no pattern that a
  /// processor could foresee.
  void Add(const Number& a, bool aNegative, const Number& b, bool bNegative)
  {
    const bool opposite = aNegative != bNegative;
    const mp_limb_t flip = opposite ? kMaximum : 0;
    // a + b without the lowest limbs, or a - b, which is a + ~b + 1
    sum.exponent = a.exponent;
    mp_limb_t carry = flip & 1;
#pragma GCC unroll 8
    for (int i = 0; i < kSize; ++i) {
      const mp_limb_t cut = i == 0 ? flip : kMaximum;
      mp_limb_t limb = a.limbs[i] & cut;
      carry = __builtin_add_overflow(limb, carry, &limb);
      carry |= __builtin_add_overflow(limb, (b.limbs[i] & cut) ^ flip, &limb);
      sum.limbs[i] = limb;
    }
    isNegative = aNegative;
    if (carry != (flip & 1)) [[unlikely]] {
      if (opposite) {
        Negate(sum);
        isNegative = bNegative;
      } else {
        MoveDown(sum, 1);
        sum.limbs[kLimbs] = 1;
        ++sum.exponent;
      }
    }
    if (sum.Top() == 0) [[unlikely]]
      MoveUp(sum);
  }

  /// AddProduct for a product of another exponent: moves the smaller number to the place of its
  /// digits in the larger one.
  [[gnu::noinline]] bool AddMoved(Number product, bool productNegative)
  {
    const Number before = sum;
    const bool sumIsLarger = before.exponent > product.exponent;
    const Number& large = sumIsLarger ? before : product;
    Number small = sumIsLarger ? product : before;
    const mp_exp_t shift = large.exponent - small.exponent;
    if (shift == 1 && isNegative != productNegative && NearlyCancel(large, small)) return false;
    MoveDown(small, shift);
    if (sumIsLarger) {
      Add(large, isNegative, small, productNegative);
    } else {
      Add(large, productNegative, small, isNegative);
    }
    return true;
  }

  /// Where mpf_sub, for exponents that differ by 1, looks for leading limbs that cancel before it
  /// cuts. For the same exponent it does so where the top limbs are equal.
  static bool NearlyCancel(const Number& large, const Number& small)
  {
    return large.Top() == 1 && large.limbs[kLimbs - 1] == 0 && small.Top() == kMaximum;
  }

  static void Negate(Number& x)
  {
    mp_limb_t carry = 1;
    for (mp_limb_t& limb : x.limbs) {
      limb = ~limb + carry;
      if (limb != 0) carry = 0;
    }
  }

  /// Moves the limbs of x down by `shift` places, with zeros from above.
  static void MoveDown(Number& x, mp_exp_t shift)
  {
    for (int i = 0; i < kSize; ++i) x.limbs[i] = i + shift < kSize ? x.limbs[i + shift] : 0;
  }

  /// Takes away empty limbs on top; x is not 0.
  static void MoveUp(Number& x)
  {
    while (x.Top() == 0) {
      for (int i = kLimbs; i > 0; --i) x.limbs[i] = x.limbs[i - 1];
      x.limbs[0] = 0;
      --x.exponent;
    }
  }

  Number sum;
  bool isZero = true;
  bool isNegative = false;
};

}  // namespace arith
