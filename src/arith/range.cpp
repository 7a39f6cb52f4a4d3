#include "arith/range.h"

#include <string>

#include "varno/sys/messages.h"

namespace varno {

void FailOutOfRange()
{
  Fail("A number is out of range: its decimal exponent is beyond +-" +
       std::to_string(kLargestExponent));
}

}  // namespace varno
