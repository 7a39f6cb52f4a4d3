#pragma once

#include <gmp.h>

namespace arith {

/// A GMP float that initialises and clears itself and is accepted wherever GMP takes one.
///
/// Its precision is the GMP default precision in force when it is built, also for a copy, and stays
/// for its life: assign values with mpf_set, which keeps the precision of the target. Only move
/// and copy assignment replace the number as a whole, precision included.
class Mpf {
 public:
  Mpf() { mpf_init(number); }
  explicit Mpf(mpf_srcptr x) { mpf_init_set(number, x); }
  explicit Mpf(double x) { mpf_init_set_d(number, x); }
  /// The value of a decimal text; 0 when the text is no number.
  explicit Mpf(const char* decimal) { mpf_init_set_str(number, decimal, 10); }

  Mpf(const Mpf& other) { mpf_init_set(number, other.number); }
  Mpf(Mpf&& other) noexcept : number{*other.number} { other.number->_mp_d = nullptr; }
  Mpf& operator=(Mpf other) noexcept
  {
    mpf_swap(number, other.number);
    return *this;
  }
  ~Mpf()
  {
    if (number->_mp_d != nullptr) mpf_clear(number);
  }

  operator mpf_t&() { return number; }
  operator const mpf_t&() const { return number; }

  /// -1, 0 or 1.
  int Sign() const { return mpf_sgn(number); }

 private:
  mpf_t number;
};

}  // namespace arith
