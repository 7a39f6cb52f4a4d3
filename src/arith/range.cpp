#include "arith/range.h"

#include <string>

#include "varno/sys/messages.h"

namespace arith {

void FailOutOfRange()
{
  varno::Fail("A number is out of range: its decimal exponent is beyond +-" +
              std::to_string(kLargestExponent));
}

}  // namespace arith
