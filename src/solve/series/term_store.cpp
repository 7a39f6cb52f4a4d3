#include "solve/series/term_store.h"

#include <algorithm>
#include <utility>

namespace varno::solve {

TermStore::TermStore(std::size_t rowCount, int termCount, mpfr_prec_t bits)
    : rowCount(rowCount),
      termCount(termCount),
      bits(bits),
      numbers(rowCount * static_cast<std::size_t>(termCount))
{
  const std::size_t limbsPerNumber = mpfr_custom_get_size(bits) / sizeof(mp_limb_t);
  limbs = std::make_unique_for_overwrite<mp_limb_t[]>(numbers.size() * limbsPerNumber);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    mp_limb_t* const digits = limbs.get() + i * limbsPerNumber;
    mpfr_custom_init(digits, bits);
    mpfr_custom_init_set(&numbers[i], MPFR_ZERO_KIND, 0, bits, digits);
  }
}

void TermStore::Grow(int wanted)
{
  if (wanted <= termCount) return;
  // By a half at least: an order that rises little by little would copy all terms again each time.
  TermStore larger(rowCount, std::max(wanted, termCount + termCount / 2), bits);
  for (std::size_t row = 0; row < rowCount; ++row) {
    for (int k = 0; k < termCount; ++k) mpfr_set(larger.Row(row) + k, Row(row) + k, MPFR_RNDN);
  }
  *this = std::move(larger);
}

}  // namespace varno::solve
