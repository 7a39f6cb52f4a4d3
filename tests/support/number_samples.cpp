#include "tests/support/number_samples.h"

namespace support {

std::vector<Mpf> RandomNumbers(int count, double low, double high)
{
  const Mpf start(low);
  Mpf width(high);
  mpf_sub(width, width, start);
  const mp_bitcnt_t allBits = mpf_get_default_prec() + 2 * GMP_NUMB_BITS;

  gmp_randstate_t generator;
  gmp_randinit_mt(generator);
  std::vector<Mpf> numbers(static_cast<std::size_t>(count));
  for (Mpf& x : numbers) {
    mpf_urandomb(x, generator, allBits);
    mpf_mul(x, x, width);
    mpf_add(x, x, start);
  }
  gmp_randclear(generator);
  return numbers;
}

Mpf Rounded(const Rational& x)
{
  Mpf rounded;
  mpf_set_q(rounded, x.get_mpq_t());
  return rounded;
}

}  // namespace support
