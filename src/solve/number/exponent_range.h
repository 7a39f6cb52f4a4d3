#pragma once

#include <mpfr.h>

namespace varno::solve {

/// Gives MPFR, on this thread and while it lives, the widest range of exponents that it has, about
/// 10^(+-10^18), instead of its usual one.
class ScopedExponentRange {
 public:
  ScopedExponentRange() : oldMin(mpfr_get_emin()), oldMax(mpfr_get_emax())
  {
    mpfr_set_emin(mpfr_get_emin_min());
    mpfr_set_emax(mpfr_get_emax_max());
  }
  ScopedExponentRange(const ScopedExponentRange&) = delete;
  ScopedExponentRange& operator=(const ScopedExponentRange&) = delete;
  ~ScopedExponentRange()
  {
    mpfr_set_emin(oldMin);
    mpfr_set_emax(oldMax);
  }

 private:
  mpfr_exp_t oldMin;
  mpfr_exp_t oldMax;
};

}  // namespace varno::solve
