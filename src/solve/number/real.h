#pragma once

#include <array>

#include <mpfr.h>

namespace varno::solve {

/// A binary floating-point number of a fixed precision, by MPFR; rounds to nearest.
///
/// It converts to MPFR's own handles, so every function of MPFR takes it but those that change a
/// precision or exchange numbers (mpfr_set_prec, mpfr_prec_round, mpfr_swap): a number of up to
/// kOwnBits holds its digits itself, which takes no memory from elsewhere. A copy has the precision
/// of the original, an assignment brings the precision along. A new number is 0.
class Real {
 public:
  static constexpr mpfr_prec_t kOwnBits = 256;

  explicit Real(mpfr_prec_t bits = 53) { Open(bits); }
  Real(const Real& other)
  {
    Open(other.Bits());
    mpfr_set(number, other.number, MPFR_RNDN);
  }
  Real(Real&& other) noexcept { Take(other); }
  Real& operator=(const Real& other)
  {
    if (!IsOpen() || Bits() != other.Bits()) SetBits(other.Bits());
    mpfr_set(number, other.number, MPFR_RNDN);
    return *this;
  }
  Real& operator=(Real&& other) noexcept
  {
    if (this == &other) return *this;
    Close();
    Take(other);
    return *this;
  }
  ~Real() { Close(); }

  operator mpfr_ptr() { return number; }
  operator mpfr_srcptr() const { return number; }

  mpfr_prec_t Bits() const { return mpfr_get_prec(number); }
  /// 0 of another precision.
  void SetBits(mpfr_prec_t bits)
  {
    Close();
    Open(bits);
  }
  bool IsZero() const { return mpfr_zero_p(number) != 0; }
  double ToDouble() const { return mpfr_get_d(number, MPFR_RNDN); }

 private:
  bool HoldsOwnDigits() const { return Bits() <= kOwnBits; }
  bool IsOpen() const { return number->_mpfr_d != nullptr; }

  void Open(mpfr_prec_t bits)
  {
    if (bits <= kOwnBits) {
      mpfr_custom_init_set(number, MPFR_ZERO_KIND, 0, bits, digits.data());
    } else {
      mpfr_init2(number, bits);
      mpfr_set_zero(number, 1);
    }
  }
  void Close()
  {
    if (HoldsOwnDigits() || !IsOpen()) return;
    mpfr_clear(number);
    number->_mpfr_d = nullptr;  // where there is no memory for what follows, nothing is held
  }
  /// What holds nothing becomes what the other one is, which may hold nothing then.
  void Take(Real& other)
  {
    number[0] = other.number[0];
    if (HoldsOwnDigits()) {
      digits = other.digits;
      number->_mpfr_d = digits.data();
    } else {
      other.number->_mpfr_d = nullptr;
    }
  }

  mpfr_t number;
  std::array<mp_limb_t, kOwnBits / 64> digits = {};
};

}  // namespace varno::solve
