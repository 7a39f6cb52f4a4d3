#include "numeric/range.h"

#include <cstdlib>
#include <string>

#include "numeric/mpf.h"
#include "sys/messages.h"

namespace varno {

void RequireRange(mpf_srcptr x)
{
  static const std::string exponent = std::to_string(kLargestExponent);
  static const Mpf largest(("1e" + exponent).c_str());
  static const Mpf smallest(("1e-" + exponent).c_str());
  if (mpf_sgn(x) == 0) return;
  __mpf_struct size = *x;  // |x|, sharing the limbs
  size._mp_size = std::abs(size._mp_size);
  if (mpf_cmp(&size, largest) > 0 || mpf_cmp(&size, smallest) < 0) {
    Fail("A number is out of range: its decimal exponent is beyond +-" + exponent);
  }
}

}  // namespace varno
