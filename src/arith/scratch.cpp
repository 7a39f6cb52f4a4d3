#include "arith/scratch.h"

namespace arith {

Mpf& Scratch()
{
  static Mpf scratch;
  if (mpf_get_prec(scratch) != mpf_get_default_prec()) scratch = Mpf();
  return scratch;
}

}  // namespace arith
