#include "numeric/term_storage.h"

#include <algorithm>
#include <climits>
#include <cstddef>

#include "sys/memory.h"

namespace varno {

std::vector<Mpf> TermStorage(int termCount)
{
  const std::size_t count = static_cast<std::size_t>(std::max(termCount, 0)) + 1;
  RequireMemory(count * (sizeof(Mpf) + mpf_get_default_prec() / CHAR_BIT));
  return std::vector<Mpf>(count);
}

}  // namespace varno
