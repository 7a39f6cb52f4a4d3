#include "arith/term_array.h"

#include <algorithm>
#include <cstddef>

#include "arith/mpf.h"
#include "varno/sys/memory.h"

namespace arith {

TermArray::TermArray(int termCount) : size(static_cast<std::size_t>(std::max(termCount, 0)) + 1)
{
  const Mpf zero;
  // GMP writes up to one limb more than the precision has.
  const std::size_t limbsEach =
      static_cast<std::size_t>(static_cast<mpf_srcptr>(zero)->_mp_prec) + 1;
  varno::RequireMemory(size * (sizeof(mpf_t) + limbsEach * sizeof(mp_limb_t)));
  numbers = std::make_unique<mpf_t[]>(size);
  limbs = std::make_unique<mp_limb_t[]>(size * limbsEach);
  for (std::size_t k = 0; k < size; ++k) {
    *numbers[k] = *static_cast<mpf_srcptr>(zero);
    numbers[k]->_mp_d = limbs.get() + k * limbsEach;
  }
}

}  // namespace arith
