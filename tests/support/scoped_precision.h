#pragma once

#include <gmp.h>

namespace support {

/// Sets GMP's default precision and puts the old one back at the end of the scope.
class ScopedPrecision {
 public:
  explicit ScopedPrecision(mp_bitcnt_t bits) : saved(mpf_get_default_prec())
  {
    mpf_set_default_prec(bits);
  }
  ~ScopedPrecision() { mpf_set_default_prec(saved); }
  ScopedPrecision(const ScopedPrecision&) = delete;
  ScopedPrecision& operator=(const ScopedPrecision&) = delete;

 private:
  const mp_bitcnt_t saved;
};

}  // namespace support
