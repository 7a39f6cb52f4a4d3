#include "arith/term_array.h"

#include <algorithm>
#include <cstddef>

#include "arith/mpf.h"

namespace arith {

namespace {

std::size_t SizeFor(int termCount)
{
  return static_cast<std::size_t>(std::max(termCount, 0)) + 1;
}

/// GMP writes up to one limb more than the precision has.
std::size_t LimbsEach(mpf_srcptr number)
{
  return static_cast<std::size_t>(number->_mp_prec) + 1;
}

}  // namespace

TermArray::TermArray(int termCount) : size(SizeFor(termCount))
{
  const Mpf zero;
  const std::size_t limbsEach = LimbsEach(zero);
  numbers = std::make_unique<mpf_t[]>(size);
  limbs = std::make_unique<mp_limb_t[]>(size * limbsEach);
  for (std::size_t k = 0; k < size; ++k) {
    *numbers[k] = *static_cast<mpf_srcptr>(zero);
    numbers[k]->_mp_d = limbs.get() + k * limbsEach;
  }
}

std::size_t TermArray::BytesFor(int termCount)
{
  const Mpf zero;
  return SizeFor(termCount) * (sizeof(mpf_t) + LimbsEach(zero) * sizeof(mp_limb_t));
}

}  // namespace arith
