#pragma once

#include <utility>

#include <mpfr.h>

namespace varno::solve {

/// A binary floating-point number of a fixed precision, by MPFR; rounds to nearest.
///
/// It converts to MPFR's own handles, so every function of MPFR takes it. A copy has the precision
/// of the original, an assignment brings the precision along. A new number is 0.
class Real {
 public:
  explicit Real(mpfr_prec_t bits = 53)
  {
    mpfr_init2(number, bits);
    mpfr_set_zero(number, 1);
  }
  Real(const Real& other) : Real(mpfr_get_prec(other.number))
  {
    mpfr_set(number, other.number, MPFR_RNDN);
  }
  Real(Real&& other) noexcept
  {
    number[0] = other.number[0];
    other.number->_mpfr_d = nullptr;
  }
  Real& operator=(const Real& other)
  {
    if (number->_mpfr_d == nullptr) return *this = Real(other);
    if (mpfr_get_prec(number) != mpfr_get_prec(other.number))
      mpfr_set_prec(number, mpfr_get_prec(other.number));
    mpfr_set(number, other.number, MPFR_RNDN);
    return *this;
  }
  Real& operator=(Real&& other) noexcept
  {
    std::swap(number[0], other.number[0]);
    return *this;
  }
  ~Real()
  {
    if (number->_mpfr_d != nullptr) mpfr_clear(number);
  }

  operator mpfr_ptr() { return number; }
  operator mpfr_srcptr() const { return number; }

  mpfr_prec_t Bits() const { return mpfr_get_prec(number); }
  bool IsZero() const { return mpfr_zero_p(number) != 0; }
  double ToDouble() const { return mpfr_get_d(number, MPFR_RNDN); }

 private:
  mpfr_t number;
};

}  // namespace varno::solve
